#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// An open file that several threads append to, each line with one WriteFile.
//
// The object counts the users of the file. The log itself is a user from `open` to `retire`. A thread is a user from
// `use` until its Use is destroyed. The last user closes the file. No operation waits for another thread. Failures are
// not reported.
class LogFile {
public:
    // The thread is not a user any more.
    struct Leave {
        void operator()(LogFile* file) const;
    };
    // A thread's permission to call `size` and `write`. Null means no permission.
    using Use = std::unique_ptr<LogFile, Leave>;

    // Opens a file, shared for reading and writing. Call it only while `isFree`, on one thread at a time. If the
    // platform cannot open the file, the object stays free.
    void open(std::wstring pathOfFile, DWORD disposition);
    // Returns true if the file has no user: it is then closed.
    bool isFree() const;
    // Makes the calling thread a user. Returns null while the object is free.
    Use use();
    // The log is not a user any more. Call it once for each `open` that succeeded.
    void retire();
    // If the log and the calling thread are the only users, closes the file, ends both uses and returns true. Otherwise
    // returns false and does nothing.
    bool closeIfAlone();

    // Returns the size in bytes of the file that the path names now. If that file cannot be opened, returns the size of
    // the open file; 0 if the platform does not know it. Needs a Use.
    std::uint32_t size() const;
    // Appends bytes. The bytes are lost if the platform call fails. Needs a Use.
    void write(std::string_view bytes);

private:
    std::wstring path;
    HANDLE handle = INVALID_HANDLE_VALUE;
    std::atomic<std::int32_t> users = 0; // while above 0, `path` and `handle` belong to an open file
};
