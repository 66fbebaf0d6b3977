#include "platform/tool/Progress.h"

#include "platform/panel/kernel/Host.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::int64_t patience = 1000000000; // ns
constexpr std::int64_t pause = 200000000;
constexpr const char* eraseLine = "\033[K";

} // namespace

Progress::Progress(const std::string& text)
    : terminal(isatty(STDERR_FILENO)),
      shown(terminal && !text.empty()),
      next(panel::host::monotonicNanoseconds() + patience) {
    if (shown)
        std::fprintf(stderr, "%s\r", text.c_str());
}

Progress::~Progress() {
    if (shown)
        std::fputs(eraseLine, stderr);
}

void Progress::show(const std::function<std::string()>& text) {
    if (!terminal)
        return;
    const std::int64_t now = panel::host::monotonicNanoseconds();
    if (now < next)
        return;
    next = now + pause;
    shown = true;
    std::fprintf(stderr, "%s%s\r", eraseLine, text().c_str());
}

bool waitWithProgress(panel::Driver& driver, const std::function<bool()>& condition, std::uint64_t limit) {
    Progress progress;
    const std::uint64_t begun = driver.status().time;
    const auto look = [&] {
        progress.show([&] {
            return formatDuration((driver.status().time - begun) / 1000 * 1000) + " of " + formatDuration(limit);
        });
        return condition();
    };
    return driver.waitUntil(look, limit);
}

} // namespace tool
