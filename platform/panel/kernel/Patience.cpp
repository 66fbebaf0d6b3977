#include "platform/panel/kernel/Patience.h"

#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Processes.h"

namespace panel::patience {

Limit limit;

std::string busyPrograms(Image& image) {
    std::string busy;
    for (Slot slot = 1; slot <= image.processesUsed; ++slot) {
        const ProcessRecord& process = processes::at(image, slot);
        bool runs = false;
        for (const ThreadRecord& thread : usedThreads(image))
            runs = runs || (thread.process == slot && thread.state == ThreadState::running && !thread.driver);
        if (process.state == ProcessState::free || !runs)
            continue;
        const std::string pid = std::to_string(process.hostPid);
        busy += (busy.empty() ? "" : ", ") + processes::name(image, process) +
                (host::isStopped(process.hostPid) ? " is stopped (kill -CONT " + pid + " lets it go on)"
                                                  : " is busy (process " + pid + ")");
    }
    return busy.empty() ? "no program waits with a deadline" : busy;
}

} // namespace panel::patience
