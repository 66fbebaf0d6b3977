#include "platform/tool/HelperLog.h"

#include "platform/panel/Paths.h"

#include <iterator>
#include <tuple>

namespace tool {

namespace {

constexpr const char* paths[] = {"\\MMCMemory\\Tarvex\\helper_log0.txt", "\\MMCMemory\\Tarvex\\helper_log1.txt"};

// Compares two log files by write time. With equal times the larger file is the older one: the helper rotates when a
// file is full.
bool isOlder(const panel::Place& first, const panel::Place& second) {
    const auto key = [](const panel::Place& place) {
        return std::make_tuple(place.status.st_mtim.tv_sec, place.status.st_mtim.tv_nsec, -place.status.st_size);
    };
    return key(first) < key(second);
}

} // namespace

HelperLog::HelperLog(const panel::Panel& panel) : root(panel.directory().string()) {}

std::vector<std::string> HelperLog::newLines() {
    const panel::Place places[] = {panel::locate(root, paths[0]), panel::locate(root, paths[1])};
    const std::size_t older = isOlder(places[1], places[0]) ? 1 : 0;
    std::vector<std::string> lines;
    for (const std::size_t index : {older, 1 - older}) {
        if (!places[index].isFile())
            continue;
        auto some = files[index].newLines(places[index].host);
        lines.insert(lines.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
    }
    return lines;
}

} // namespace tool
