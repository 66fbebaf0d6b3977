#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// An open file that several threads write to, each line with one WriteFile.
//
// It counts its users: the log, from `open` to `retire`, and each thread from `use` until its Use is gone. The last one
// closes it. No operation waits for another thread.
class LogFile {
public:
    struct Leave {
        void operator()(LogFile* file) const;
    };
    // A thread's right to measure and to write.
    using Use = std::unique_ptr<LogFile, Leave>;

    // Opens a file, shared for reading and writing. Only while `isFree`, for one thread at a time. If the platform
    // refuses, the object stays free.
    void open(std::wstring pathOfFile, DWORD disposition);
    // Nobody uses it, so nothing is open.
    bool isFree() const;
    // Null while it is free.
    Use use();
    // Ends the log's own use. Once after each `open` that has succeeded.
    void retire();
    // Closes it and ends the log's own use and the calling thread's, if no other thread uses it; otherwise does
    // nothing and answers false.
    bool closeIfAlone();

    // The size in bytes of what lies at the path now, opened for reading; 0 if that fails.
    std::uint32_t size() const;
    // Appends; the bytes are lost if that fails.
    void write(std::string_view bytes);

private:
    std::wstring path;
    HANDLE handle = INVALID_HANDLE_VALUE;
    std::atomic<std::int32_t> users = 0; // path and handle are those of an open file while it is above 0
};
