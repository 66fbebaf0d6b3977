// Runs the panel command as a child process. The page shows and does everything by means of panel commands.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace view {

// The result of a command.
struct Outcome {
    int code = 0; // exit code; 128 plus the signal's number if a signal ended the command
    std::string text; // standard output and standard error, or the reason why the command could not be started
};

class Commands {
public:
    // `program` is the file of the panel command, `panel` the panel's directory.
    Commands(const std::filesystem::path& program, const std::filesystem::path& panel);

    // Runs `panel -C DIRECTORY WORDS...`, without a shell, and waits for its end. Throws std::runtime_error if this
    // machine has no descriptor left.
    Outcome run(const std::vector<std::string>& words) const;

private:
    std::string executable;
    std::string directory;
};

} // namespace view
