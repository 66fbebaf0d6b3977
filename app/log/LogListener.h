#pragma once

#include <cstdint>
#include <string>

// A line as its writer gave it, without time stamp and level name.
struct LogRecord {
    std::wstring message;
    std::int32_t level;
};

// Hears of every line that the log admits, on the thread that writes it, after the line was output or queued.
class LogListener {
public:
    virtual void receive(const LogRecord& record) = 0;
    virtual ~LogListener() = default;
};
