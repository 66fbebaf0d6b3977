// The watcher: a thread in each process of a panel that notices the end of other processes and changes of the kernel
// file.
//
// Each process of a panel has one Watcher. Its thread sleeps in one poll over a pidfd of each process and an inotify
// descriptor of the kernel file. It wakes up for three reasons:
// - A process has ended or was killed. The watcher removes the process from the tables and releases the threads that
//   waited for its end.
// - A process has joined the panel. The joining process announces itself by setting the time stamp of the kernel file.
//   The watchers then also watch this process.
// - The panel is gone: somebody removed, moved, replaced, truncated or overwrote the kernel file, or moved a folder
//   above it. (The panel itself changes the file only through mappings.) The watcher ends its own process: it kills a
//   program; in a driver it prints one line on standard error and exits. If the panel was already off, the driver
//   continues, unless the file was truncated. This check works even while the kernel's lock is stuck. The updates of
//   the tables for the other two reasons need the lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <climits>
#include <poll.h>
#include <pthread.h>
#include <string>

namespace panel {

// Tells when the kernel file or a folder above it has changed. Uses system calls only, so that a process may use it
// after a fork.
class KernelAlarm {
public:
    // `device` and `inode` identify the mapped kernel file.
    KernelAlarm(const char* root, std::uint64_t device, std::uint64_t inode);
    ~KernelAlarm();
    KernelAlarm(const KernelAlarm&) = delete;
    KernelAlarm& operator=(const KernelAlarm&) = delete;

    // Returns a descriptor that becomes readable after a change; -1 if the host has no inotify instances left.
    int descriptor() const {
        return bell;
    }
    // Returns the time-out for a poll of the descriptor in real ms; -1 means no time-out.
    int patience() const;
    // `written`: overwritten by a write call; `gone`: removed, moved or replaced; `cut`: truncated, so that reading the
    // mapping would crash.
    enum class State { fine, written, gone, cut };
    // Consumes the events and returns the file's state.
    State look() const;

private:
    const std::uint64_t fileDevice;
    const std::uint64_t fileInode;
    char file[PATH_MAX];
    int bell;
};

class Watcher {
public:
    // Starts the thread. Throws std::runtime_error if the host has no descriptor or thread left.
    Watcher(Image& image, const std::string& directory, bool isDriver);
    // Waits for the thread's end. The caller must not hold the kernel's lock.
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // Tells all watchers of the panel that a process has joined it.
    static void announce(const std::string& directory);

    // Lets SIGBUS end this process with one line on standard error: somebody has truncated the kernel file, and this
    // process has read the mapping before it noticed.
    static void endWhenTruncated();

    static inline std::atomic<int> exitCode = 1; // exit code of a driver whose panel is gone

private:
    enum Place : std::uint32_t { stopping, ringing, firstProcess };
    // Twice the number of processes: an ended process keeps its entry until the thread has noticed the end.
    static constexpr std::uint32_t capacity = firstProcess + 2 * maxProcesses;

    struct Watched {
        std::int32_t pid;
        std::uint64_t start;
        bool program; // true: a program; if it is a child of the watcher's process, the watcher reaps it
    };

    static void* run(void* watcher);
    void watch();
    bool look(); // updates the tables; returns false if the lock was not free within a second
    void watchNew();
    void forgetDead();
    bool goesOn(); // returns whether the panel still exists
    void endProcess();

    Image& image;
    const std::string root;
    const bool driver;
    const KernelAlarm alarm;
    pollfd entries[capacity];
    Watched watched[capacity];
    std::uint32_t used = firstProcess;
    bool unwatched = false; // a process has no entry because the host had no descriptor left
    pthread_t thread{};
};

} // namespace panel
