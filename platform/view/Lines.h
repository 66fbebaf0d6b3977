// Reads the new lines of a panel's files for one page: trace, log, device requests and touches.
#pragma once

#include "platform/tool/FileTail.h"
#include "platform/tool/HelperLog.h"

#include <filesystem>
#include <string>
#include <vector>

namespace view {

class Lines {
public:
    explicit Lines(const panel::Panel& panel);

    struct Batch {
        std::string file; // "trace", "requests", "touches" or "log"
        bool gone; // the lines of earlier calls are no longer valid: the file is a new one
        std::vector<std::string> lines; // oldest first
    };
    // Returns what is new since the last call: the log, and at most the last 1 MiB of each other file.
    std::vector<Batch> read();

private:
    struct Source {
        std::string name;
        std::filesystem::path file;
        tool::FileTail tail = {};
    };
    Source sources[3];
    tool::HelperLog log;
};

} // namespace view
