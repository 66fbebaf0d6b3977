#include "platform/view/Watch.h"

#include "platform/panel/Mapping.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Image.h"

#include <chrono>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>

namespace view {

namespace {

constexpr std::uint32_t anything = IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVE | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::chrono::milliseconds pause(25); // collects changes that belong together
constexpr std::uint32_t hour = 3600000; // ms

// Reads the tables without the lock. A half-finished change does no harm: its end releases the lock, which starts
// another look.
std::uint64_t digestOf(const panel::Image& image) {
    std::uint64_t digest = 14695981039346656037U; // FNV-1a over numbers
    const auto add = [&](std::uint64_t number) { digest = (digest ^ number) * 1099511628211U; };
    for (const std::uint64_t number :
         {std::uint64_t{image.on}, image.clock.now, std::uint64_t{image.tracing}, std::uint64_t{image.faultCount},
          std::uint64_t{image.flashWritable}, std::uint64_t{image.mouseHook.thread}, image.shows,
          static_cast<std::uint64_t>(image.cursorCount), std::uint64_t{image.endedCount}})
        add(number);
    for (const std::uint32_t word : image.backLight)
        add(word);
    if (image.activeEvent)
        add(image.objects[image.activeEvent - 1].signalled);
    for (const panel::SignalRecord& signal : image.signals)
        add(signal.count);
    for (const panel::FaultRecord& fault : image.faults)
        add(fault.hits);
    for (const panel::WindowRecord& window : image.windows)
        add(window.used ? window.serial * 2 + window.visible : 0);
    for (const panel::BlockDeviceRecord& device : image.blockDevices)
        add(device.used ? device.serial : 0);
    for (const panel::ProcessRecord& process : image.processes) {
        if (process.state == panel::ProcessState::free || process.driver)
            continue;
        add(process.serial);
        std::uint64_t handles = 0;
        for (const panel::HandleRecord& handle : process.handles)
            handles += handle.object != 0;
        add(handles);
    }
    for (const panel::ThreadRecord& thread : image.threads)
        if (!thread.driver)
            add(thread.waitOrder * 4 + static_cast<std::uint64_t>(thread.state));
    return digest;
}

} // namespace

Watch::Watch(std::filesystem::path panel)
    : root(std::move(panel)),
      files(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      bell(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    watchFiles();
}

void Watch::watchFiles() {
    const auto add = [&](const char* folder) {
        return inotify_add_watch(files, (root / folder).c_str(), anything | IN_ONLYDIR) >= 0;
    };
    hears = add("");
    for (const char* folder : {"run", "devices", "registry", "fs", "fs/MMCMemory", "fs/MMCMemory/Tarvex"})
        add(folder); // the last one holds the log
    struct stat status {};
    const bool whole =
        stat((root / "run/kernel").c_str(), &status) == 0 && status.st_size == static_cast<off_t>(sizeof(panel::Image));
    const ino_t found = whole ? status.st_ino : 0;
    if (found == listened)
        return;
    // A thread that sleeps on a former file ends later: at the file's next change, or within an hour.
    lastDigest = 0;
    listened = found;
    try {
        if (found)
            std::thread([this, found] { listen(found); }).detach();
    } catch (const std::system_error&) {
        listened = 0; // the next call tries again
        throw;
    }
}

void Watch::wait() {
    pollfd sources[] = {{files, POLLIN, 0}, {bell, POLLIN, 0}};
    poll(sources, 2, hears ? -1 : 1000);
    std::this_thread::sleep_for(pause);
    char events[16384]; // the content of the events does not matter
    for (const int source : {files, bell})
        while (read(source, events, sizeof events) > 0) {
        }
    watchFiles();
}

void Watch::listen(ino_t own) {
    bool wasOn = false;
    try {
        const panel::Mapping mapping(root);
        panel::Image* const image = mapping.image;
        for (; image && image->on && listened == own; std::this_thread::sleep_for(pause)) {
            wasOn = true;
            image->watched = 1; // before the look, so that a later change wakes this thread
            if (const std::uint64_t digest = digestOf(*image); digest != lastDigest) {
                lastDigest = digest;
                eventfd_write(bell, 1);
            } else {
                panel::host::futexWait(image->watched, 1, hour);
            }
        }
    } catch (const std::runtime_error&) { // `panel status` reports the reason
    }
    if (!listened.compare_exchange_strong(own, 0))
        return; // another thread listens to a newer file
    lastDigest = 0;
    if (wasOn)
        eventfd_write(bell, 1);
}

} // namespace view
