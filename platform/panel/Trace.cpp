#include "platform/panel/Trace.h"

#include "platform/panel/kernel/Host.h"

namespace panel {

void writeTraceLine(const std::string& directory, std::string_view line) {
    host::appendToFile(directory + "/run/trace", line); // not there: the panel was switched off this moment
}

} // namespace panel
