#include "platform/view/Watch.h"

#include "platform/panel/Mapping.h"
#include "platform/panel/kernel/Host.h"

#include <chrono>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <utility>

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
    watchFolders();
    std::thread([this] { listen(); }).detach();
}

void Watch::watchFolders() {
    const auto add = [&](const std::filesystem::path& folder) {
        return inotify_add_watch(files, folder.c_str(), anything | IN_ONLYDIR);
    };
    int found = -1;
    if (add(root) < 0) // the panel, and the folders above it, may be created again
        for (std::filesystem::path above = root; found < 0 && above.has_relative_path();)
            found = add(above = above.parent_path());
    if (const int former = std::exchange(around, found); former >= 0 && former != found)
        inotify_rm_watch(files, former);
    // The last folder holds the log.
    for (const char* folder : {"run", "devices", "registry", "fs", "fs/MMCMemory", "fs/MMCMemory/Tarvex"})
        add(root / folder);
}

void Watch::wait() {
    pollfd sources[] = {{files, POLLIN, 0}, {bell, POLLIN, 0}};
    poll(sources, 2, -1);
    std::this_thread::sleep_for(pause);
    char events[16384]; // the content of the events does not matter
    for (const int source : {files, bell})
        while (read(source, events, sizeof events) > 0) {
        }
    watchFolders();
    wakeListener(); // the kernel file may be a new one
}

void Watch::ring() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(bell, &one, sizeof one);
}

void Watch::wakeListener() {
    ++rounds;
    rounds.notify_all();
    const std::lock_guard lock(mutex);
    if (listened && listened->watched.exchange(0))
        panel::host::futexWake(listened->watched);
}

void Watch::listen() {
    for (;;) {
        const unsigned seen = rounds;
        try {
            const panel::Mapping kernel(root);
            if (kernel.image && kernel.image->on) {
                listenTo(*kernel.image);
                continue;
            }
        } catch (const std::runtime_error&) { // `panel status` reports the reason
        }
        rounds.wait(seen);
    }
}

void Watch::listenTo(panel::Image& image) {
    lastBoot = image.clock.realBase;
    {
        const std::lock_guard lock(mutex);
        listened = &image;
    }
    const auto isCurrent = [&] {
        struct stat status {};
        return stat((root / "run/kernel").c_str(), &status) == 0 && status.st_ino == image.fileInode &&
               status.st_size == static_cast<off_t>(sizeof image);
    };
    while (image.on && isCurrent()) {
        image.watched = 1; // before the look, so that a later change wakes this thread
        if (digestOf(image) == lastDigest) {
            panel::host::futexWait(image.watched, 1, hour);
        } else {
            lastDigest = digestOf(image);
            ring();
        }
        std::this_thread::sleep_for(pause);
    }
    const std::lock_guard lock(mutex);
    listened = nullptr;
    lastDigest = 0;
    ring();
}

} // namespace view
