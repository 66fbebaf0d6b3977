#pragma once

#include <cstdint>
#include <string>

// A message as it was given to the log, without time stamp and level name.
struct LogRecord {
    std::wstring message;
    std::int32_t level;
};

// A listener of the log. Register it with Logger::addListener; the log does not own it.
class LogListener {
public:
    // Receives every line that the log admits, after the line was output or queued. It is called on the thread that
    // writes the line, possibly on several threads at the same time.
    virtual void receive(const LogRecord& record) = 0;
    virtual ~LogListener() = default;
};
