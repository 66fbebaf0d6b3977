// The panel command, run as a child process. Whatever the page shows or does goes through it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace view {

struct Outcome {
    int code = 0; // its exit code; 128 and its signal if one ended it
    std::string output;
    std::string errors; // standard error; the reason, if the command could not be started
};

class Commands {
public:
    // `program`: the panel command's file; `panel`: the panel's directory.
    Commands(std::filesystem::path program, std::filesystem::path panel);

    // Runs `panel -C DIRECTORY WORDS...` to its end; it is interrupted if this process ends before. No shell is
    // involved. Any thread that lives as long as the process.
    Outcome run(const std::vector<std::string>& words) const;

private:
    std::string executable;
    std::string directory;
};

} // namespace view
