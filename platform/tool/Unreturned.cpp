#include "platform/tool/Unreturned.h"

#include "platform/panel/Trace.h"

namespace tool {

std::vector<std::string> unreturnedCalls(const panel::PanelStatus& status) {
    std::vector<std::string> lines;
    for (const auto& process : status.processes)
        for (const auto& each : process.calls)
            lines.push_back(panel::traceLine(each.since, process.name, each.thread, each.call) + " has not returned");
    return lines;
}

} // namespace tool
