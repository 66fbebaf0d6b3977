// Notices changes of a panel, without polling: a futex reports each release of the kernel's lock, and inotify reports
// changes of files. The panel may be off, be deleted and be created again meanwhile. While its folder is missing, and
// if this machine has no inotify instance left, `wait` returns once a second. Objects live as long as the process.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <sys/types.h>

namespace view {

class Watch {
public:
    explicit Watch(std::filesystem::path panel);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Blocks until the panel may have changed since the last call returned. One thread only.
    void wait();
    // A hash of the kernel's tables that `panel status`, `ps` and `fault list` show. 0 while the panel is off.
    std::uint64_t digest() const {
        return lastDigest;
    }

private:
    void watchFiles();
    void listen(ino_t own);

    const std::filesystem::path root;
    const int files; // inotify descriptor
    bool hears = false; // whether `files` watches the panel's folder
    const int bell; // eventfd that reports a change of the digest
    std::atomic<std::uint64_t> lastDigest = 0;
    std::atomic<ino_t> listened = 0; // inode of the kernel file that a thread listens to; 0: none
};

} // namespace view
