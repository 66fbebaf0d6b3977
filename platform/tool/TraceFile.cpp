#include "platform/tool/TraceFile.h"

#include "platform/panel/Driver.h"
#include "platform/tool/Unreturned.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace tool {

namespace {

// Returns the call of a line, without its time and its end: "TarvexHelper.exe#1 t1 Sleep[1]".
std::string_view callOf(std::string_view line) {
    const std::size_t begin = std::min(line.find(' ', 9), line.size());
    return line.substr(begin, line.find("](", begin) - begin);
}

} // namespace

TraceFile::TraceFile(const panel::Panel& panel) {
    std::optional<panel::PanelStatus> status; // first: a call that returns meanwhile is in the file then
    if (panel.isOn())
        status = panel::Driver(panel).status();
    const std::filesystem::path file = panel.directory() / "run/trace";
    std::error_code missing;
    if (!std::filesystem::exists(file) && !(status && status->tracing))
        throw std::runtime_error("nothing is traced yet (panel trace on switches the trace on)");
    if (std::filesystem::is_regular_file(file, missing)) { // opening a named pipe could block
        sequential.open(file, std::ios::binary);
        random.open(file, std::ios::binary);
        size = static_cast<std::uint64_t>(std::max<std::streamoff>(random.seekg(0, std::ios::end).tellg(), 0));
    }
    if (!status)
        return;
    time = status->time;
    unreturned = unreturnedCalls(*status);
}

void TraceFile::read(const std::function<void(const std::string& line, std::uint64_t place)>& receive) {
    last.clear();
    sequential.clear();
    sequential.seekg(0);
    std::uint64_t place = 0;
    for (std::string line; std::getline(sequential, line); last.swap(line)) {
        const std::uint64_t next = place + line.size() + 1;
        if (next > size || sequential.eof()) // not the whole line was there
            break;
        std::erase_if(unreturned, [&](const std::string& call) { return callOf(call) == callOf(line); });
        receive(line, place);
        place = next;
    }
    for (std::size_t index = 0; index < unreturned.size(); ++index)
        receive(unreturned[index], size + index);
}

std::string TraceFile::lineAt(std::uint64_t place) {
    if (place >= size)
        return unreturned.at(place - size);
    std::string line;
    random.clear();
    random.seekg(static_cast<std::streamoff>(place));
    std::getline(random, line);
    return line;
}

} // namespace tool
