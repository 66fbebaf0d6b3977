#include "platform/panel/Trace.h"

#include "platform/panel/kernel/Host.h"

#include <cstdio>

namespace panel {

std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call) {
    char begin[24];
    std::snprintf(begin, sizeof begin, "%10llu ", static_cast<unsigned long long>(time));
    return std::string(begin).append(process) + " t" + std::to_string(thread) + ' ' + std::string(call);
}

bool writeTraceLine(const std::string& directory, std::string_view line, std::uint32_t limit) {
    const std::string file = directory + "/run/trace"; // the folder is missing if the panel is being booted again
    if (host::appendToFile(file, line) < std::uint64_t{limit} * 1024 || limit == noTraceLimit)
        return true;
    host::appendToFile(file, std::string(line.substr(0, line.find(' ', 9) + 1)) +
                                 "the trace ends here: it has reached its limit of " + std::to_string(limit) +
                                 " KiB (panel trace on --limit)\n");
    return false;
}

} // namespace panel
