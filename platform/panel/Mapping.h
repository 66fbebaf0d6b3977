// Guards for code that changes a panel from outside, whether the panel is on or off.
#pragma once

#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Lock.h"
#include "platform/panel/kernel/Patience.h"
#include "platform/panel/kernel/Scheduler.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/file.h>
#include <unistd.h>

namespace panel {

// Maps the kernel file of a panel while the object lives. `image` is null if the panel has no valid kernel file. A
// panel that was switched off keeps its kernel file until the next boot: check `image->on` too.
class Mapping {
public:
    // Throws std::runtime_error if the file is damaged or cannot be opened (Runtime.h).
    explicit Mapping(const std::filesystem::path& root) : image(mapImage((root / "run/kernel").string())) {}
    ~Mapping() {
        if (image)
            unmapImage(image);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    Image* const image;
};

// A lock among the commands that change the panel as a whole (boot, off, plug, ...). It is an flock of the panel's
// directory, so the host releases it when the process dies.
class Change {
public:
    // Waits for the lock. `atMost` is a time-out in real ms: when it passes, the object goes on without the lock. With
    // 0 the limit of `--patience` applies (Patience.h), which ends the process.
    explicit Change(const std::filesystem::path& root, std::uint32_t atMost = 0)
        : directory(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        const std::uint32_t limit = atMost ? atMost : patience::limit.milliseconds;
        while (flock(directory, LOCK_EX | (limit ? LOCK_NB : 0)) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
            if (errno == EINTR)
                continue;
            if (waited >= limit && atMost) {
                held = false;
                break;
            }
            if (waited >= limit)
                patience::limit.giveUp("another command is changing the panel and does not go on");
            usleep(1000 * glance);
            waited += glance;
        }
    }
    ~Change() {
        close(directory);
    }
    bool isHeld() const {
        return held;
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

private:
    static constexpr std::uint32_t glance = 50; // real ms between two attempts
    int directory;
    std::uint32_t waited = 0;
    bool held = true;
};

// A Change of state that programs of the panel use too. If the panel has a kernel file, the object also holds the
// kernel's lock and wakes the released threads at its end.
class LockedChange {
public:
    explicit LockedChange(const std::filesystem::path& root) : change(root), mapping(root) {
        if (mapping.image)
            lock.emplace(*mapping.image);
    }
    ~LockedChange() {
        lock.reset();
        if (mapping.image)
            scheduler::deliverWakes(*mapping.image);
    }
    LockedChange(const LockedChange&) = delete;
    LockedChange& operator=(const LockedChange&) = delete;

    Image* image() { // null if the panel has no valid kernel file
        return mapping.image;
    }

private:
    Change change;
    Mapping mapping;
    std::optional<Lock> lock;
};

} // namespace panel
