// Reads the new lines of a panel's files for one page: trace, log, device requests and touches.
#pragma once

#include "platform/tool/FileTail.h"
#include "platform/tool/HelperLog.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace view {

class Lines {
public:
    explicit Lines(const panel::Panel& panel);

    // Receives the name of the file ("log", "trace", ...), whether its earlier lines are gone, whether the lines are
    // older than this reader, and the lines, oldest first. Returns false to stop.
    using Receiver = std::function<bool(const std::string&, bool, bool, const std::vector<std::string>&)>;

    // Passes the new lines to `receive`. Returns false if `receive` did. `boot` differs after each boot: trace,
    // requests and touches start anew then.
    bool read(std::int64_t boot, const Receiver& receive);

private:
    struct Source {
        std::string name;
        std::filesystem::path file;
        tool::FileTail tail = {};
        bool some = false;
    };
    std::vector<Source> sources;
    tool::HelperLog log;
    std::int64_t lastBoot = -1;
};

} // namespace view
