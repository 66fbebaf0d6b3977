// Files' times follow the panel's clock. Wants the lock.
#pragma once

#include "platform/panel/kernel/Clock.h"

#include <windows.h>

#include <ctime>
#include <sys/stat.h>

namespace panel {

inline void setWriteTime(const Image& image, int hostFile) {
    const std::int64_t date = clock::date(image);
    const timespec time{static_cast<time_t>(date / 1000), static_cast<long>(date % 1000) * 1000000};
    const timespec times[] = {time, time};
    futimens(hostFile, times);
}

inline FILETIME fileTime(const timespec& time) {
    constexpr std::int64_t unixEpoch = 11644473600; // s from 1601 to 1970
    const std::int64_t value = (time.tv_sec + unixEpoch) * 10000000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

} // namespace panel
