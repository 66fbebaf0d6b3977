// What several threads write through hundreds of rotations: for the unit tests, and for the panel executable's checks.
#pragma once

#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"

#include <windows.h>

namespace rotating_log {

inline constexpr unsigned THREADS = 4;
inline constexpr std::int32_t MANY_FILES = 100000; // none is used twice

inline void setUp(Logger& log, std::int32_t files) {
    CreateDirectoryW(L"\\Log", nullptr);
    log.setDirectory(L"\\Log");
    log.setMaxFiles(files);
    log.setMaxFileSize(100);
}

// Until there are three hundred files, or so many lines of this thread.
inline void write(Logger& log, unsigned thread, std::int64_t lines = 100000) {
    for (std::int64_t number = 0; number < lines && GetFileAttributesW(L"\\Log\\log300.txt") == INVALID_FILE_ATTRIBUTES;
         ++number) {
        log.writeParts(LogLevel::Info, {OrvaUtils::decimal(thread), L"/", OrvaUtils::decimal(number)});
    }
}

} // namespace rotating_log
