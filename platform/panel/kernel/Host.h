// The functions of the host, Linux, that the simulated panel uses: futexes, processes, time and small files.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace panel::host {

inline constexpr std::uint32_t noLimit = ~std::uint32_t{0}; // a time-out that never passes

// Sleeps while the word holds the value, for at most `milliseconds` of real time. May return early.
void futexWait(std::atomic<std::uint32_t>& word, std::uint32_t value, std::uint32_t milliseconds);
// Wakes up to `count` threads that sleep on the word, in any process.
void futexWake(std::atomic<std::uint32_t>& word, int count = 1);

std::int32_t threadId(); // the calling thread's id on the host
std::int64_t monotonicNanoseconds();

// Returns the start time of a process or thread in the host's clock ticks. Together with the id it identifies the
// process even after the id was reused. Returns 0 if the process has ended, reaped or not; returns `unknown` if it
// exists but the host has no descriptor left to read the time.
inline constexpr std::uint64_t unknown = ~std::uint64_t{0};
std::uint64_t startTime(std::int32_t pid);
// Returns whether the process still runs. An unknown start time counts as a match.
inline bool isAlive(std::int32_t pid, std::uint64_t start) {
    const std::uint64_t now = startTime(pid);
    return now != 0 && (now == start || now == unknown);
}

// Returns whether a signal (SIGSTOP) or a debugger has stopped the process.
bool isStopped(std::int32_t pid);

// Returns an id that differs after each boot of the host.
std::string bootId();

// Returns a pidfd, which becomes readable when the process ends. Returns -1 if the process is gone or no descriptor is
// free.
int openProcess(std::int32_t pid);

// Returns whether a process with this id exists, even if it has ended and waits to be reaped. Cheaper than startTime.
bool exists(std::int32_t pid);

// Waits until the process has ended. Returns false if it still runs after `milliseconds` of real time.
bool waitForEnd(std::int32_t pid, std::uint64_t start, std::uint32_t milliseconds);

// Reads a whole file. Returns "" if it cannot be read or is not a regular file: reading a named pipe could block.
std::string readFile(const std::string& path);
// Appends in one write, so that lines of several processes do not mix. Creates the file. Returns the new size of the
// file, or 0 if the host has not stored all of the text.
std::uint64_t appendToFile(const std::string& path, std::string_view text);
// Replaces a file: writes a new file beside it and renames it. Throws std::runtime_error with the path in its text.
void writeFile(const std::string& path, const std::string& content);

} // namespace panel::host
