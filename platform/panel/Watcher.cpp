#include "platform/panel/Watcher.h"

#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Lock.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t lockGlance = 1000; // real ms between two checks of the kernel file while the lock is stuck
constexpr int withoutBell = 1000; // real ms between two checks without inotify or a pidfd

std::string kernelFile(const std::string& directory) {
    return directory + "/run/kernel";
}

} // namespace

void Watcher::endWhenTruncated() {
    std::signal(SIGBUS, [](int) {
        constexpr std::string_view text = "panel: the panel is gone: somebody has cut run/kernel short\n";
        [[maybe_unused]] const auto written = write(STDERR_FILENO, text.data(), text.size());
        _exit(exitCode);
    });
}

KernelAlarm::KernelAlarm(const char* root, std::uint64_t device, std::uint64_t inode)
    : fileDevice(device), fileInode(inode), bell(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    const auto hears = [&](const char* place, std::uint32_t events) {
        std::snprintf(file, sizeof file, "%s%s", root, place);
        return inotify_add_watch(bell, file, events) >= 0;
    };
    // IN_ATTRIB also reports a new time stamp.
    const bool all = hears("", IN_MOVE_SELF) && hears("/run", IN_MOVE_SELF | IN_DELETE) &&
                     hears("/run/kernel", IN_MODIFY | IN_MOVE_SELF | IN_ATTRIB);
    std::snprintf(file, sizeof file, "%s/run/kernel", root);
    if (all)
        return;
    close(bell);
    bell = -1;
}

KernelAlarm::~KernelAlarm() {
    close(bell);
}

int KernelAlarm::patience() const {
    return bell < 0 ? withoutBell : -1;
}

KernelAlarm::State KernelAlarm::look() const {
    bool written = false;
    alignas(inotify_event) char text[1024];
    for (ssize_t length = 0; (length = read(bell, text, sizeof text)) > 0;)
        for (const char* at = text; at < text + length;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            written = written || (event.mask & IN_MODIFY);
            at += sizeof event + event.len;
        }
    struct stat status {};
    if (stat(file, &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? State::gone : State::fine;
    if (status.st_dev != fileDevice || status.st_ino != fileInode || status.st_nlink == 0)
        return State::gone;
    return status.st_size != static_cast<off_t>(sizeof(Image)) ? State::cut : written ? State::written : State::fine;
}

void Watcher::announce(const std::string& directory) {
    utimensat(AT_FDCWD, kernelFile(directory).c_str(), nullptr, 0);
}

Watcher::Watcher(Image& watchedImage, const std::string& directory, bool isDriver)
    : image(watchedImage),
      root(directory),
      driver(isDriver),
      alarm(directory.c_str(), watchedImage.fileDevice, watchedImage.fileInode) {
    entries[stopping] = {eventfd(0, EFD_CLOEXEC), POLLIN, 0};
    if (entries[stopping].fd < 0)
        throw std::runtime_error("no more file descriptors (ulimit -n)");
    entries[ringing] = {alarm.descriptor(), POLLIN, 0};
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    // The new thread inherits the mask: signals are for the program's own threads.
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const bool started = pthread_create(&thread, nullptr, run, this) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (!started)
        throw std::runtime_error("no more threads (ulimit -u)");
}

Watcher::~Watcher() {
    eventfd_write(entries[stopping].fd, 1);
    pthread_join(thread, nullptr);
    close(entries[stopping].fd);
    for (std::uint32_t index = firstProcess; index < used; ++index)
        close(entries[index].fd);
}

void* Watcher::run(void* watcher) {
    static_cast<Watcher*>(watcher)->watch();
    return nullptr;
}

void Watcher::watch() {
    while (goesOn()) {
        const bool looked = look();
        poll(entries, used, !looked ? 0 : unwatched ? withoutBell : alarm.patience());
        if (entries[stopping].revents)
            return;
        forgetDead();
    }
}

bool Watcher::look() {
    {
        const Lock lock(image, lockGlance);
        if (!lock.isHeld())
            return false;
        watchNew();
        processes::noticeDead(image);
        scheduler::step(image);
    }
    scheduler::deliverWakes(image);
    return true;
}

void Watcher::watchNew() {
    unwatched = false;
    for (const ProcessRecord& process : usedProcesses(image)) {
        bool known = process.state == ProcessState::free || process.hostPid <= 0 || process.hostPid == getpid();
        for (std::uint32_t index = firstProcess; index < used; ++index)
            known = known || (watched[index].pid == process.hostPid && watched[index].start == process.hostStart);
        if (known)
            continue;
        // ESRCH means that the process has ended; noticeDead removes it. Other failures make the watcher poll.
        const int opened = used == capacity ? -1 : host::openProcess(process.hostPid);
        if (opened < 0) {
            unwatched = unwatched || used == capacity || errno != ESRCH;
            continue;
        }
        entries[used] = {opened, POLLIN, 0};
        watched[used++] = {process.hostPid, process.hostStart, !process.driver};
    }
}

void Watcher::forgetDead() {
    for (std::uint32_t index = firstProcess; index < used; ++index) {
        if (!entries[index].revents)
            continue;
        if (watched[index].program)
            waitpid(watched[index].pid, nullptr, WNOHANG); // reaps a child of this process; fails harmlessly otherwise
        close(entries[index].fd);
        --used;
        entries[index] = entries[used];
        watched[index--] = watched[used];
    }
}

bool Watcher::goesOn() {
    const KernelAlarm::State state = alarm.look();
    if (state == KernelAlarm::State::fine)
        return true;
    if (state == KernelAlarm::State::written)
        image.magic = 0; // an overwritten file must not be used, even if its tables look sound
    const bool readable = state != KernelAlarm::State::cut;
    if (!driver || !readable || image.on)
        endProcess();
    return false; // clean shutdown: a driver may still read the tables
}

void Watcher::endProcess() {
    if (!driver)
        raise(SIGKILL);
    std::fprintf(stderr, "panel: the panel is gone: somebody removed or changed %s\n", kernelFile(root).c_str());
    _exit(exitCode);
}

} // namespace panel
