// What this process hears of without asking: that another process of the panel has ended, however it ended, and that
// the panel itself is gone. One thread, asleep in one poll: over a descriptor of each process, and over what happens to
// the kernel file.
//
// The dead are taken out of the tables, and who waited for them goes on. A process that begins is announced by a new
// time stamp of the kernel file. A kernel file that was removed, moved away (or a folder with it), replaced, cut short
// or written over is a panel that is gone (it changes through mappings alone): a program of it is killed, a driver ends
// with one line on standard error, unless the panel had been switched off before. Also while the lock is stuck.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <climits>
#include <poll.h>
#include <pthread.h>
#include <string>

namespace panel {

// Rings when something happens to the kernel file, or to one of the panel's folders above it. System calls alone: also
// for a process that was just forked.
class KernelAlarm {
public:
    KernelAlarm(const char* root, std::uint64_t device, std::uint64_t inode); // of the mapped kernel file
    ~KernelAlarm();
    KernelAlarm(const KernelAlarm&) = delete;
    KernelAlarm& operator=(const KernelAlarm&) = delete;

    int descriptor() const { // polls as readable when it rings; -1: the host has no more of them
        return bell;
    }
    int patience() const; // real ms after which one looks without its ringing; below 0: never
    enum class State { fine, written, gone, cut };
    State look() const;

private:
    const std::uint64_t fileDevice;
    const std::uint64_t fileInode;
    char file[PATH_MAX];
    int bell;
};

class Watcher {
public:
    // Throws std::runtime_error if the host has no descriptor or thread left.
    Watcher(Image& image, const std::string& directory, bool isDriver);
    ~Watcher(); // waits for the thread; not with the lock held
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // Tells all watchers of the panel that a process has joined it.
    static void announce(const std::string& directory);

    static inline std::atomic<int> exitCode = 1; // of a driver whose panel is gone

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
    bool look(); // at the tables; false: somebody keeps the lock
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
    bool unwatched = false; // a process, for want of a descriptor
    pthread_t thread{};
};

} // namespace panel
