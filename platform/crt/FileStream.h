// A file of the platform behind a stream of the C library. Both platforms implement _wfopen with it.
//
// The operations have the signatures and error results that the C library expects of a stream's cookie (fopencookie
// here, funopen on a panel). A stream uses its object from one thread at a time.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

class FileStream {
public:
    // Opens a file for a mode of _wfopen, shared for reading and writing. Returns null on failure. `close` deletes the
    // object.
    static FileStream* open(const wchar_t* path, const wchar_t* mode);

    bool canRead() const {
        return (access & GENERIC_READ) != 0;
    }
    bool canWrite() const {
        return (access & GENERIC_WRITE) != 0;
    }

    // Returns the number of bytes read, 0 at the end of the file, -1 on failure.
    std::int32_t read(char* buffer, std::size_t size);
    // Returns the number of bytes written. Fewer bytes than `size` mean a failure. In append mode it first seeks to the
    // end.
    std::int32_t write(const char* buffer, std::size_t size);
    // Returns the new position, or -1 on failure. `origin` is SEEK_SET, SEEK_CUR or SEEK_END.
    std::int64_t seek(std::int64_t offset, int origin);
    // Closes the file and deletes the object. Returns 0, or -1 if closing failed; the object is deleted in both cases.
    static int close(FileStream* stream);

private:
    FileStream(HANDLE opened, DWORD granted, bool appends) : file(opened), access(granted), append(appends) {}

    HANDLE file;
    DWORD access;
    bool append;
};
