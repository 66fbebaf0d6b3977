// Tells when something may have changed on a panel: from the kernel file's lock and from the files of the panel's
// directory. Nobody looks while nothing happens. The panel may be off, be deleted and be made again meanwhile. Lives as
// long as the process.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>

namespace view {

class Watch {
public:
    explicit Watch(std::filesystem::path panel);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Blocks until something has changed since the last call returned. False: only files that grow line by line have
    // (trace, log, requests, touches). One thread.
    bool wait();

    // Differs from boot to boot; 0: the panel was not on yet.
    std::int64_t boot() const {
        return lastBoot;
    }

private:
    void watchFolders();
    enum class News { none, lines, state };
    News readFileEvents();
    void listen();
    void listenTo(panel::Image& image);
    void wakeListener();
    void ring();

    const std::filesystem::path root;
    const int files; // inotify
    const int bell; // eventfd: the kernel's tables have changed
    int parent = -1; // watch descriptor of the folder around the panel
    std::set<int> linesOnly; // watch descriptors
    std::atomic<std::int64_t> lastBoot = 0;
    std::atomic<unsigned> rounds = 0; // of `wait`
    std::mutex mutex;
    panel::Image* listened = nullptr;
};

} // namespace view
