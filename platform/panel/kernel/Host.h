// The few things that the simulated panel asks of the host.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace panel::host {

inline constexpr std::uint32_t noLimit = ~std::uint32_t{0};

// Sleeps while the word holds the value, at most so many real milliseconds. May return early.
void futexWait(std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds);
void futexWake(std::atomic<std::uint32_t>& word, int count = 1);

std::int32_t threadId(); // of the calling thread
std::int64_t monotonicNanoseconds();

// The start time of a process or thread in the host's clock ticks; 0 if it is gone or only waits to be reaped,
// `unknown` if it is there but the host does not tell (no descriptor is free).
inline constexpr std::uint64_t unknown = ~std::uint64_t{0};
std::uint64_t startTime(std::int32_t pid);
inline bool isAlive(std::int32_t pid, std::uint64_t start) {
    const std::uint64_t now = startTime(pid);
    return now != 0 && (now == start || now == unknown);
}

bool isStopped(std::int32_t pid); // by a signal or a debugger

// Differs from boot to boot of the host.
std::string bootId();

// A descriptor that polls as readable once the process has ended; -1 if it is gone, or none is free.
int openProcess(std::int32_t pid);

bool exists(std::int32_t pid); // cheap; true also for one that only waits to be reaped

// Waits until the process is gone, at most so many real milliseconds; false if it still lives.
bool waitForEnd(std::int32_t pid, std::uint64_t start, std::uint32_t milliseconds);

// A whole file; empty if it cannot be read, or is no regular file: a named pipe would make its reader wait.
std::string readFile(const std::string& path);
// Appends in one write, so that lines of several processes do not mix; makes the file. Failures are not told.
void appendToFile(const std::string& path, std::string_view text);
// Writes a new file beside it and renames it into place; throws std::runtime_error naming the path.
void writeFile(const std::string& path, const std::string& content);

} // namespace panel::host
