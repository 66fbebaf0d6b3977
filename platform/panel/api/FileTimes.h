// Files' times follow the panel's clock. What reads the clock wants the lock.
#pragma once

#include "platform/panel/kernel/Clock.h"

#include <windows.h>

#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace panel {

// A calendar date, in ms since 1970, as the host's files have it.
inline timespec hostTime(std::int64_t date) {
    return {static_cast<time_t>(date / 1000), static_cast<long>(date % 1000) * 1000000};
}

inline void setWriteTime(const Image& image, int hostFile) {
    const timespec time = hostTime(clock::date(image));
    const timespec times[] = {time, time};
    futimens(hostFile, times);
}

inline void setWriteTime(const std::string& hostPath, std::int64_t date) {
    const timespec times[] = {hostTime(date), hostTime(date)};
    utimensat(AT_FDCWD, hostPath.c_str(), times, 0);
}

inline FILETIME fileTime(const timespec& time) {
    constexpr std::int64_t unixEpoch = 11644473600; // s from 1601 to 1970
    const std::int64_t value = (time.tv_sec + unixEpoch) * 10000000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

} // namespace panel
