#include "platform/view/Lines.h"

namespace view {

namespace {

// What is passed at once at most; earlier lines are dropped.
constexpr std::ptrdiff_t most = 4000; // lines
constexpr std::uintmax_t mostBytes = 2 << 20;

std::vector<std::string> lastOf(std::vector<std::string> lines) {
    if (std::ssize(lines) > most)
        lines.erase(lines.begin(), lines.end() - most);
    return lines;
}

} // namespace

Lines::Lines(const panel::Panel& panel)
    : sources{{"trace", panel.directory() / "run/trace"},
              {"requests", panel.directory() / "devices/requests"},
              {"touches", panel.directory() / "devices/touches"}},
      log(panel) {}

bool Lines::read(std::int64_t boot, const Receiver& receive) {
    const bool first = lastBoot == -1;
    const bool booted = !first && boot != lastBoot;
    lastBoot = boot;
    for (Source& source : sources) {
        // The file starts anew after a boot; the reader must then drop the lines that it has shown.
        std::error_code unreadable;
        const bool gone = source.some && (booted || !std::filesystem::exists(source.file, unreadable));
        if (gone)
            source = {source.name, source.file};
        const std::vector<std::string> lines = lastOf(source.tail.newLines(source.file, mostBytes));
        source.some = source.some || !lines.empty();
        if ((gone || !lines.empty()) && !receive(source.name, gone, first, lines))
            return false;
    }
    // The helper's log survives a boot, so its lines are never dropped.
    const std::vector<std::string> lines = lastOf(log.newLines());
    return lines.empty() || receive("log", false, first, lines);
}

} // namespace view
