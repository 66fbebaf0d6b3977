// The helper's log on a panel: the two files that it writes in turn.
#pragma once

#include "platform/panel/Panel.h"
#include "platform/tool/FileTail.h"

#include <string>
#include <vector>

namespace tool {

class HelperLog {
public:
    explicit HelperLog(const panel::Panel& panel);

    // The lines since the last call, oldest first; those of the first call are all that the files hold.
    std::vector<std::string> newLines();

private:
    std::string root;
    FileTail files[2];
};

} // namespace tool
