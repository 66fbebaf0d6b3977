#include "platform/panel/Trace.h"

#include <fcntl.h>
#include <unistd.h>

namespace panel {

void writeTraceLine(const std::string& directory, std::string_view line) {
    const int file = open((directory + "/run/trace").c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0)
        return; // the panel was switched off this moment
    // One write, so that lines of several processes do not mix.
    [[maybe_unused]] const auto written = write(file, line.data(), line.size());
    close(file);
}

} // namespace panel
