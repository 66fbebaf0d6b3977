// What this process hears of without asking: that another process of the panel has ended, however it ended, and that
// the panel itself is gone. One thread, asleep in one poll: over a descriptor of each process, and over what happens to
// the kernel file.
//
// The dead are taken out of the tables, and who waited for them goes on. A process that begins is announced by a new
// time stamp of the kernel file. A kernel file that was removed, moved away, cut short or written over is a panel that
// is gone (it changes through mappings alone): a program of it is killed, a driver ends with exit code 1 and one line
// on standard error, unless the panel had been switched off before.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <poll.h>
#include <pthread.h>
#include <string>

namespace panel {

// Rings when something happens to the kernel file. System calls alone: also for a process that was just forked.
class KernelAlarm {
public:
    explicit KernelAlarm(const char* kernelFile);
    ~KernelAlarm();
    KernelAlarm(const KernelAlarm&) = delete;
    KernelAlarm& operator=(const KernelAlarm&) = delete;

    int descriptor() const { // polls as readable when it rings; -1: the host has no more of them
        return bell;
    }
    int patience() const { // real ms after which one looks without its ringing; below 0: never
        return bell < 0 ? 1000 : -1;
    }
    enum class State { fine, written, gone, cut };
    State look() const;

private:
    int file;
    int bell;
};

class Watcher {
public:
    Watcher(Image& image, const std::string& directory, bool isDriver);
    ~Watcher(); // waits for the thread; not with the lock held
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // Tells all watchers of the panel that a process has joined it.
    static void announce(const std::string& directory);

private:
    enum Place : std::uint32_t { stopping, ringing, firstProcess };
    static constexpr std::uint32_t capacity = firstProcess + 2 * maxProcesses; // the dead stay until they are reaped

    struct Watched {
        std::int32_t pid;
        std::uint64_t start;
        bool program; // perhaps this process's child
    };

    static void* run(void* watcher);
    void watch();
    void look(); // at the tables
    void watchNew();
    void forgetDead();
    bool goesOn(); // the panel is there
    void endProcess();

    Image& image;
    const std::string root;
    const bool driver;
    const KernelAlarm alarm;
    pollfd entries[capacity];
    Watched watched[capacity];
    std::uint32_t used = firstProcess;
    pthread_t thread{};
    bool started = false;
};

} // namespace panel
