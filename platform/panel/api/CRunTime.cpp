// Streams of crt.h over the simulated files. They pass no gate; what a stream does with its file, does.
#include "platform/crt/FileStream.h"
#include "platform/panel/kernel/Wait.h"

#include <crt.h>

namespace {

// The host closes what a program has left open when its process has long ended on the panel: nothing is done then.

ssize_t readStream(void* stream, char* buffer, std::size_t size) {
    return panel::processEnded ? -1 : static_cast<FileStream*>(stream)->read(buffer, size);
}

ssize_t writeStream(void* stream, const char* buffer, std::size_t size) {
    return panel::processEnded ? 0 : static_cast<FileStream*>(stream)->write(buffer, size);
}

int seekStream(void* stream, off64_t* offset, int origin) {
    *offset = panel::processEnded ? -1 : static_cast<FileStream*>(stream)->seek(*offset, origin);
    return *offset < 0 ? -1 : 0;
}

int closeStream(void* stream) {
    return panel::processEnded ? -1 : FileStream::close(static_cast<FileStream*>(stream));
}

} // namespace

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept {
    FileStream* const file = FileStream::open(path, mode);
    if (!file)
        return nullptr;
    // Opened with the host's mode: without "a", since the host does not seek for streams of this kind.
    const char hostMode[] = {file->canRead() ? 'r' : 'w', file->canRead() && file->canWrite() ? '+' : '\0', '\0'};
    std::FILE* stream = fopencookie(file, hostMode, {readStream, writeStream, seekStream, closeStream});
    if (!stream)
        FileStream::close(file);
    return stream;
}
