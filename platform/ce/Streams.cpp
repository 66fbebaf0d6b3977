// _wfopen over the platform's files, and the system calls that the C library expects. A panel has no descriptors, so
// these system calls fail.
#include "platform/ce/Coredll.h"
#include "platform/crt/FileStream.h"

#include <crt.h>

#include <cerrno>
#include <sys/stat.h>

namespace {

RunTimeLock streamsLock; // protects the library's table of streams, which has no lock

int readStream(void* stream, char* buffer, int size) {
    return static_cast<int>(static_cast<FileStream*>(stream)->read(buffer, static_cast<std::size_t>(size)));
}

int writeStream(void* stream, const char* buffer, int size) {
    return static_cast<int>(static_cast<FileStream*>(stream)->write(buffer, static_cast<std::size_t>(size)));
}

fpos_t seekStream(void* stream, fpos_t offset, int origin) {
    return static_cast<fpos_t>(static_cast<FileStream*>(stream)->seek(offset, origin));
}

int closeStream(void* stream) {
    return FileStream::close(static_cast<FileStream*>(stream));
}

} // namespace

void initialiseStreams() noexcept {
    streamsLock.initialise();
}

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept {
    FileStream* const file = FileStream::open(path, mode);
    if (file == nullptr)
        return nullptr;
    streamsLock.lock();
    std::FILE* const stream = funopen(file, file->canRead() ? readStream : nullptr,
                                      file->canWrite() ? writeStream : nullptr, seekStream, closeStream);
    streamsLock.unlock();
    if (stream == nullptr)
        FileStream::close(file);
    return stream;
}

extern "C" {

int _close(int) {
    errno = EBADF;
    return -1;
}

int _read(int, char*, int) {
    errno = EBADF;
    return -1;
}

int _write(int, const char*, int) {
    errno = EBADF;
    return -1;
}

int _lseek(int, int, int) {
    errno = EBADF;
    return -1;
}

int _fstat(int, struct stat*) {
    errno = EBADF;
    return -1;
}

int _isatty(int) {
    return 0;
}
}
