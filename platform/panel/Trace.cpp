#include "platform/panel/Trace.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace panel {

std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call) {
    char begin[24];
    std::snprintf(begin, sizeof begin, "%10llu ", static_cast<unsigned long long>(time));
    return std::string(begin).append(process) + " t" + std::to_string(thread) + ' ' + std::string(call);
}

void writeTraceLine(const std::string& directory, std::string_view line) {
    const int file = open((directory + "/run/trace").c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0)
        return; // the panel was switched off this moment
    // One write, so that lines of several processes do not mix.
    [[maybe_unused]] const auto written = write(file, line.data(), line.size());
    close(file);
}

} // namespace panel
