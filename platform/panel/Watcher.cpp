#include "platform/panel/Watcher.h"

#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Lock.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t harm = IN_MODIFY | IN_MOVE_SELF;

std::string kernelFile(const std::string& directory) {
    return directory + "/run/kernel";
}

} // namespace

KernelAlarm::KernelAlarm(const char* kernelFile)
    : file(open(kernelFile, O_RDONLY | O_CLOEXEC)), bell(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    inotify_add_watch(bell, kernelFile, harm | IN_ATTRIB); // the last: it was removed, or only has a new time stamp
}

KernelAlarm::~KernelAlarm() {
    close(file);
    close(bell);
}

KernelAlarm::State KernelAlarm::look() const {
    bool harmed = false;
    alignas(inotify_event) char text[1024];
    for (ssize_t length = 0; (length = read(bell, text, sizeof text)) > 0;)
        for (const char* at = text; at < text + length; at += sizeof(inotify_event))
            harmed = harmed || (reinterpret_cast<const inotify_event*>(at)->mask & harm);
    struct stat status {};
    if (fstat(file, &status) != 0 || status.st_size != static_cast<off_t>(sizeof(Image)))
        return State::cut;
    return harmed ? State::written : status.st_nlink == 0 ? State::gone : State::fine;
}

void Watcher::announce(const std::string& directory) {
    utimensat(AT_FDCWD, kernelFile(directory).c_str(), nullptr, 0);
}

Watcher::Watcher(Image& watchedImage, const std::string& directory, bool isDriver)
    : image(watchedImage), root(directory), driver(isDriver), alarm(kernelFile(directory).c_str()) {
    entries[stopping] = {eventfd(0, EFD_CLOEXEC), POLLIN, 0};
    entries[ringing] = {alarm.descriptor(), POLLIN, 0};
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // signals are for the program's own threads
    started = pthread_create(&thread, nullptr, run, this) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Watcher::~Watcher() {
    if (started) {
        eventfd_write(entries[stopping].fd, 1);
        pthread_join(thread, nullptr);
    }
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
        look();
        poll(entries, used, alarm.patience());
        if (entries[stopping].revents)
            return;
        forgetDead();
    }
}

void Watcher::look() {
    {
        const Lock lock(image);
        watchNew();
        processes::noticeDead(image);
        scheduler::step(image);
    }
    scheduler::deliverWakes(image);
}

void Watcher::watchNew() {
    for (const ProcessRecord& process : usedProcesses(image)) {
        bool known = process.state == ProcessState::free || process.hostPid <= 0 || process.hostPid == getpid();
        for (std::uint32_t index = firstProcess; index < used; ++index)
            known = known || (watched[index].pid == process.hostPid && watched[index].start == process.hostStart);
        const int opened = known || used == capacity ? -1 : host::openProcess(process.hostPid);
        if (opened < 0)
            continue;
        entries[used] = {opened, POLLIN, 0};
        watched[used++] = {process.hostPid, process.hostStart, !process.driver};
    }
}

void Watcher::forgetDead() {
    for (std::uint32_t index = firstProcess; index < used; ++index) {
        if (!entries[index].revents)
            continue;
        if (watched[index].program)
            waitpid(watched[index].pid, nullptr, WNOHANG); // reaped if it was this process's child
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
        image.magic = 0; // nobody may trust it, also where it looks sound
    const bool readable = state != KernelAlarm::State::cut;
    if (!driver || !readable || image.on)
        endProcess();
    return false; // switched off in order, and a driver may look at what is left
}

void Watcher::endProcess() {
    if (!driver)
        raise(SIGKILL);
    std::fprintf(stderr, "panel: the panel is gone: somebody removed or changed %s\n", kernelFile(root).c_str());
    _exit(1);
}

} // namespace panel
