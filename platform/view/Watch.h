// Tells when something may have changed on a panel: from the kernel file's lock and from the files of the panel's
// directory. Nobody looks while nothing happens. The panel may be off, be deleted and be made again meanwhile. Lives as
// long as the process.
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

    // Blocks until something may have changed since the last call returned. One thread.
    void wait();

    // Of the kernel's tables that `panel status`, `ps` and `fault list` show; 0: the panel is off.
    std::uint64_t digest() const {
        return lastDigest;
    }
    // Differs from boot to boot; 0: the panel was not on yet.
    std::int64_t boot() const {
        return lastBoot;
    }

private:
    void watchFolders();
    void listen();
    void listenTo(panel::Image& image);
    void wakeListener();
    void ring();

    const std::filesystem::path root;
    const int files; // inotify
    const int bell; // eventfd: the digest has changed
    int around = -1; // watch descriptor of the folder around the panel, while there is none
    std::atomic<std::uint64_t> lastDigest = 0;
    std::atomic<std::int64_t> lastBoot = 0;
    std::atomic<unsigned> rounds = 0; // of `wait`
    std::mutex mutex;
    panel::Image* listened = nullptr;
};

} // namespace view
