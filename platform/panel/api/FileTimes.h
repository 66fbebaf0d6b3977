// Sets and reads the write times of files. They follow the panel's clock, not the host's.
#pragma once

#include "platform/panel/kernel/Clock.h"

#include <windows.h>

#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace panel {

// Converts a date in ms since 1970 UTC to the host's format.
inline timespec hostTime(std::int64_t date) {
    return {static_cast<time_t>(date / 1000), static_cast<long>(date % 1000) * 1000000};
}

// Sets the write time of an open file to the panel's current date. Needs the kernel's lock.
inline void setWriteTime(const Image& image, int hostFile) {
    const timespec time = hostTime(clock::date(image));
    const timespec times[] = {time, time};
    futimens(hostFile, times);
}

// Sets the write time of a file to a date in ms since 1970 UTC.
inline void setWriteTime(const std::string& hostPath, std::int64_t date) {
    const timespec times[] = {hostTime(date), hostTime(date)};
    utimensat(AT_FDCWD, hostPath.c_str(), times, 0);
}

// Converts the host's format to the platform's: units of 100 ns since 1601.
inline FILETIME fileTime(const timespec& time) {
    constexpr std::int64_t unixEpoch = 11644473600; // seconds from 1601 to 1970
    const std::int64_t value = (time.tv_sec + unixEpoch) * 10000000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

} // namespace panel
