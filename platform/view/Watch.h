// Notices changes of a panel, without polling: a futex reports each release of the kernel's lock, and inotify reports
// changes of files. The panel may be off, be deleted and be created again meanwhile. Objects live as long as the
// process.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <atomic>
#include <filesystem>
#include <mutex>

namespace view {

class Watch {
public:
    explicit Watch(std::filesystem::path panel);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Blocks until the panel may have changed since the last call returned. One thread only.
    void wait();
    // Ends the current or next `wait`. Any thread.
    void ring();

    // A hash of the kernel's tables that `panel status`, `ps` and `fault list` show. 0 while the panel is off.
    std::uint64_t digest() const {
        return lastDigest;
    }
    // Differs after each boot of the panel. 0 if the panel was not on yet.
    std::int64_t boot() const {
        return lastBoot;
    }

private:
    void watchFolders();
    void listen();
    void listenTo(panel::Image& image);
    void wakeListener();

    const std::filesystem::path root;
    const int files; // inotify descriptor
    const int bell; // eventfd that reports a change of the digest
    int around = -1; // watch of the nearest folder above a panel that does not exist; -1: no such watch
    std::atomic<std::uint64_t> lastDigest = 0;
    std::atomic<std::int64_t> lastBoot = 0;
    std::atomic<unsigned> rounds = 0; // calls of `wait`
    std::mutex mutex;
    panel::Image* listened = nullptr; // the image on which the thread sleeps
};

} // namespace view
