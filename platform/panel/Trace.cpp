#include "platform/panel/Trace.h"

#include "platform/panel/kernel/Host.h"

#include <cstdio>

namespace panel {

std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call) {
    char begin[24];
    std::snprintf(begin, sizeof begin, "%10llu ", static_cast<unsigned long long>(time));
    return std::string(begin).append(process) + " t" + std::to_string(thread) + ' ' + std::string(call);
}

void writeTraceLine(const std::string& directory, std::string_view line) {
    host::appendToFile(directory + "/run/trace", line); // the folder is missing if the panel is being booted again
}

} // namespace panel
