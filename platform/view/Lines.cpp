#include "platform/view/Lines.h"

namespace view {

namespace {

constexpr std::ptrdiff_t most = 4000; // most lines that are passed at once; earlier lines are dropped

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
        const bool gone = source.some && (booted || !std::filesystem::exists(source.file));
        if (gone)
            source = {source.name, source.file};
        const std::vector<std::string> lines = lastOf(source.tail.newLines(source.file));
        source.some = source.some || !lines.empty();
        if ((gone || !lines.empty()) && !receive(source.name, gone, first, lines))
            return false;
    }
    // The helper's log survives a boot, so its lines are never dropped.
    const std::vector<std::string> lines = lastOf(log.newLines());
    return lines.empty() || receive("log", false, first, lines);
}

} // namespace view
