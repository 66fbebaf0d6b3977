// Changing a panel from outside of it, whether it is on or off.
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

// The mapped kernel file of a panel; no image if it is off.
class Mapping {
public:
    explicit Mapping(const std::filesystem::path& root) : image(mapImage((root / "run/kernel").string())) {}
    ~Mapping() {
        if (image)
            unmapImage(image);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    Image* const image;
};

// While it lives, other commands that change the panel as a whole wait. `atMost`: real ms after which it goes on
// without their consent; 0: it does not.
class Change {
public:
    explicit Change(const std::filesystem::path& root, std::uint32_t atMost = 0)
        : directory(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        const std::uint32_t limit = atMost ? atMost : patience::limit.milliseconds;
        while (flock(directory, LOCK_EX | (limit ? LOCK_NB : 0)) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
            if (errno == EINTR)
                continue;
            if (waited >= limit && atMost)
                break;
            if (waited >= limit)
                patience::limit.giveUp("another command is changing the panel and does not go on");
            usleep(1000 * glance);
            waited += glance;
        }
    }
    ~Change() {
        close(directory);
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

private:
    static constexpr std::uint32_t glance = 50; // real ms
    int directory;
    std::uint32_t waited = 0;
};

// A change of what programs of the panel may be using: with the kernel file's lock, if the panel is on.
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

    Image* image() { // null: it is off
        return mapping.image;
    }

private:
    Change change;
    Mapping mapping;
    std::optional<Lock> lock;
};

} // namespace panel
