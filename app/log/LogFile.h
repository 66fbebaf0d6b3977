#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// An open file that several threads append to, each line with one WriteFile.
//
// The file counts its users: the log itself, from `open` to `retire`, and each thread, from `use` until its Use is
// destroyed. The last user closes the file. No operation waits for another thread. Failures are not reported.
class LogFile {
public:
    // Ends the use of a thread.
    struct Leave {
        void operator()(LogFile* file) const;
    };
    // The right of a thread to measure and to write the file. Null means that there is no right.
    using Use = std::unique_ptr<LogFile, Leave>;

    // Opens a file, shared for reading and writing. Call it only while `isFree`, on one thread at a time. If the
    // platform cannot open the file, the object stays free.
    void open(std::wstring pathOfFile, DWORD disposition);
    // Tells whether the file has no user, so that nothing is open.
    bool isFree() const;
    // Starts the use of the calling thread. Returns null while the object is free.
    Use use();
    // Ends the use of the log. Call it once for each `open` that succeeded.
    void retire();
    // Closes the file if the log and the calling thread are its only users, and ends both uses. Otherwise returns false
    // and does nothing.
    bool closeIfAlone();

    // Returns the size in bytes of the file that the path names now, or 0 if the file cannot be opened. Needs a Use.
    std::uint32_t size() const;
    // Appends bytes. The bytes are lost if the platform call fails. Needs a Use.
    void write(std::string_view bytes);

private:
    std::wstring path;
    HANDLE handle = INVALID_HANDLE_VALUE;
    std::atomic<std::int32_t> users = 0; // while above 0, `path` and `handle` belong to an open file
};
