// The panel command, run as a child process. Whatever the page shows or does goes through it.
#pragma once

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <sys/types.h>
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

    // Runs `panel -C DIRECTORY WORDS...` to its end. No shell is involved. Any thread.
    Outcome run(const std::vector<std::string>& words);

    // Ends what still runs; from then on nothing is started any more.
    void stop();

private:
    std::string executable;
    std::string directory;
    std::mutex mutex;
    std::set<pid_t> running;
    bool stopped = false;
};

} // namespace view
