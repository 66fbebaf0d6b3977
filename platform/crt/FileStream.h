// A file of the platform under a stream of the C library: what both platforms' _wfopen put their streams on. The four
// operations are those of a stream's cookie; errors are what a cookie answers for them.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

class FileStream {
public:
    // Opens it for a mode of _wfopen, shared for reading and writing; null on failure. Ended by close.
    static FileStream* open(const wchar_t* path, const wchar_t* mode);

    bool canRead() const {
        return (access & GENERIC_READ) != 0;
    }
    bool canWrite() const {
        return (access & GENERIC_WRITE) != 0;
    }

    std::int32_t read(char* buffer, std::size_t size); // -1: error
    std::int32_t write(const char* buffer, std::size_t size); // fewer bytes than asked for: error
    std::int64_t seek(std::int64_t offset, int origin); // the new position; -1: error
    static int close(FileStream* stream); // 0; -1: error. It is gone in both cases

private:
    FileStream(HANDLE opened, DWORD granted, bool appends) : file(opened), access(granted), append(appends) {}

    HANDLE file;
    DWORD access;
    bool append;
};
