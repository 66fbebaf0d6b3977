#include "platform/panel/kernel/Host.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <linux/futex.h>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace panel::host {

void futexWait(std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds) {
    timespec limit{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000L};
    syscall(SYS_futex, &word, FUTEX_WAIT, value, milliseconds == noLimit ? nullptr : &limit, nullptr, 0);
}

void futexWake(std::atomic<std::uint32_t>& word, int count) {
    syscall(SYS_futex, &word, FUTEX_WAKE, count, nullptr, nullptr, 0);
}

std::int32_t threadId() {
    thread_local const auto id = static_cast<std::int32_t>(syscall(SYS_gettid));
    return id;
}

std::int64_t monotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

bool exists(std::int32_t pid) {
    return kill(pid, 0) == 0 || errno == EPERM;
}

std::string bootId() {
    return readFile("/proc/sys/kernel/random/boot_id");
}

namespace {

// Returns the fields of /proc/PID/stat behind the process's name, "S 1 ...", or null. Uses the caller's buffer: the
// first allocation of a thread would cost more than the whole function.
const char* statusOf(std::int32_t pid, char (&text)[1024]) {
    // The emulator fakes "/proc/PID/stat" of its own process, but not this file.
    std::snprintf(text, sizeof text, "/proc/%d/task/%d/stat", pid, pid);
    const int file = open(text, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    const auto length = read(file, text, sizeof text - 1);
    close(file);
    text[length > 0 ? length : 0] = 0;
    const char* field = std::strrchr(text, ')'); // the name before it may contain any character
    return field && field[1] == ' ' ? field + 2 : "X";
}

} // namespace

bool isStopped(std::int32_t pid) {
    char text[1024];
    const char* status = statusOf(pid, text);
    return status && (*status == 'T' || *status == 't');
}

std::uint64_t startTime(std::int32_t pid) {
    char text[1024];
    const char* field = statusOf(pid, text);
    if (!field)
        return exists(pid) ? unknown : 0;
    if (*field == 'Z' || *field == 'X')
        return 0;
    for (int number = 3; number < 22; ++number) {
        field = std::strchr(field, ' ');
        if (!field)
            return 0;
        ++field;
    }
    return std::strtoull(field, nullptr, 10);
}

int openProcess(std::int32_t pid) {
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0)); // the descriptor is close-on-exec
}

bool waitForEnd(std::int32_t pid, std::uint64_t start, std::uint32_t milliseconds) {
    const int file = openProcess(pid);
    if (file < 0)
        return !isAlive(pid, start);
    bool ended = !isAlive(pid, start);
    if (!ended) {
        pollfd entry{file, POLLIN, 0};
        ended = poll(&entry, 1, static_cast<int>(milliseconds)) > 0 || !isAlive(pid, start);
    }
    close(file);
    return ended;
}

std::string readFile(const std::string& path) {
    std::string content;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return content;
    struct stat status {};
    const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    char block[16384];
    for (ssize_t length; regular && (length = read(file, block, sizeof block)) > 0;)
        content.append(block, static_cast<std::size_t>(length));
    close(file);
    return content;
}

std::uint64_t appendToFile(const std::string& path, std::string_view text) {
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    if (file < 0)
        return 0;
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const off_t size = written ? lseek(file, 0, SEEK_CUR) : 0;
    close(file);
    return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

void writeFile(const std::string& path, const std::string& content) {
    const std::string fresh = path + ".new";
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    int error = file < 0 ? errno : 0;
    for (std::size_t at = 0; !error && at < content.size();) { // one write takes at most 2 GiB
        const ssize_t length = write(file, content.data() + at, content.size() - at);
        error = length > 0 ? 0 : length < 0 ? errno : ENOSPC;
        at += length > 0 ? static_cast<std::size_t>(length) : 0;
    }
    if (file >= 0)
        close(file);
    if (error || rename(fresh.c_str(), path.c_str()) != 0) {
        error = error ? error : errno;
        unlink(fresh.c_str());
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(error));
    }
}

} // namespace panel::host
