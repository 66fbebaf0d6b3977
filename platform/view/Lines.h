// The lines that a panel's files gain, for one reader: trace, log, requests of devices, touches.
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

    // Of the file's name, whether what it had before is gone, whether these lines are history, and the lines, oldest
    // first. False: end.
    using Receiver = std::function<bool(const std::string&, bool, bool, const std::vector<std::string>&)>;

    // Hands over what is new. `boot` differs from boot to boot, which trace, requests and touches do not outlive.
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
