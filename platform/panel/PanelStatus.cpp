#include "platform/panel/PanelStatus.h"

#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Activity.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Image.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Screen.h"

#include <algorithm>
#include <iterator>

namespace panel {

namespace {

std::string processOf(Image& image, const WindowRecord& window) {
    return processes::name(image, processes::at(image, scheduler::at(image, window.thread).process));
}

std::string backgroundOf(const WindowRecord& window) {
    const std::uint32_t brush = window.background - firstStockObject;
    if (window.background == 0 || brush == NULL_BRUSH)
        return "none";
    return brush == BLACK_BRUSH ? "black" : brush == WHITE_BRUSH ? "white" : "other";
}

std::string hookOwner(Image& image) {
    const Slot thread = image.mouseHook.thread;
    return thread ? processes::name(image, processes::at(image, scheduler::at(image, thread).process)) : "";
}

ScreenStatus screenStatus(Image& image) {
    const WindowRecord* window = screen::cover(image);
    if (!window)
        return {{}, {}, "none", image.cursorCount};
    return {window->className, processOf(image, *window), backgroundOf(*window), image.cursorCount};
}

} // namespace

PanelStatus statusOf(Image& image, Slot self) {
    const ClockRecord& clock = image.clock;
    PanelStatus status{clock.mode,
                       clock.factor / 1000.0,
                       clock::now(image),
                       clock::ticks(image),
                       clock::date(image),
                       image.tracing.load(std::memory_order_relaxed) != 0,
                       {},
                       {},
                       {},
                       activity::isActive(image),
                       image.flashWritable != 0,
                       {std::begin(image.backLight), std::end(image.backLight)},
                       screenStatus(image),
                       hookOwner(image),
                       {}};
    for (const SignalRecord& signal : image.signals)
        if (signal.name[0])
            status.signals.push_back({signal.name, signal.count});
    for (Slot slot = 1; slot <= image.processesUsed; ++slot) {
        const ProcessRecord& process = processes::at(image, slot);
        if (process.state == ProcessState::free || slot == self)
            continue;
        ProcessStatus entry{processes::name(image, process),
                            process.path,
                            process.commandLine,
                            process.hostPid,
                            process.driver != 0,
                            0,
                            0,
                            0,
                            {}};
        for (const HandleRecord& handle : process.handles)
            entry.handles += handle.object != 0;
        for (const ThreadRecord& thread : usedThreads(image))
            if (thread.state != ThreadState::free && thread.process == slot) {
                ++entry.threads;
                entry.waiting += thread.state == ThreadState::waiting;
                if (thread.state == ThreadState::waiting && thread.call[0])
                    entry.calls.push_back({thread.number, thread.waitingSince, thread.call});
            }
        std::sort(entry.calls.begin(), entry.calls.end(),
                  [](const CallStatus& first, const CallStatus& second) { return first.thread < second.thread; });
        status.processes.push_back(std::move(entry));
    }
    for (std::uint32_t age = maxEnded; age > 0; --age) {
        const EndedRecord& ended = image.ended[(image.endedCount - age) % maxEnded];
        if (ended.start)
            status.ended.push_back({std::string(image.programs[ended.program].name) + '#' + std::to_string(ended.start),
                                    ended.exitCode, ended.time});
    }
    for (const WindowRecord& window : image.windows)
        if (window.used)
            status.windows.push_back({window.className, processOf(image, window), window.visible != 0});
    return status;
}

} // namespace panel
