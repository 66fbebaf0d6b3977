// The helper's log on a panel. The helper rotates between two files; this class reads them as one log.
#pragma once

#include "platform/panel/Panel.h"
#include "platform/tool/FileTail.h"

#include <string>
#include <vector>

namespace tool {

class HelperLog {
public:
    explicit HelperLog(const panel::Panel& panel);

    // Returns the lines since the last call, oldest first. The first call returns all lines.
    std::vector<std::string> newLines();

private:
    std::string root;
    FileTail files[2];
};

} // namespace tool
