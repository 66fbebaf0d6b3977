// The streams of crt.h over the simulated files. The stream functions pass no gate; the file operations of a stream do.
#include "platform/crt/FileStream.h"
#include "platform/panel/kernel/Wait.h"

#include <crt.h>

#include <mutex>
#include <set>

namespace {

// During exit the host closes the streams that the program left open. The process has already ended on the panel then,
// so the ending thread does nothing, and other threads stop here.
bool isOver() {
    if (panel::processEnded && !panel::endsProcess)
        panel::standStill();
    return panel::processEnded;
}

ssize_t readStream(void* stream, char* buffer, std::size_t size) {
    return isOver() ? -1 : static_cast<FileStream*>(stream)->read(buffer, size);
}

ssize_t writeStream(void* stream, const char* buffer, std::size_t size) {
    return isOver() ? 0 : static_cast<FileStream*>(stream)->write(buffer, size);
}

int seekStream(void* stream, off64_t* offset, int origin) {
    *offset = isOver() ? -1 : static_cast<FileStream*>(stream)->seek(*offset, origin);
    return *offset < 0 ? -1 : 0;
}

// The open streams. The leak check does not see them through the host's streams. Never destroyed: threads may still use
// the list while the process ends.
class OpenStreams {
public:
    static OpenStreams& instance() {
        static auto& streams = *new OpenStreams;
        return streams;
    }

    void add(FileStream* stream) {
        const std::lock_guard lock(mutex);
        streams.insert(stream);
    }

    int close(FileStream* stream) {
        {
            const std::lock_guard lock(mutex);
            streams.erase(stream);
        }
        return FileStream::close(stream);
    }

private:
    std::mutex mutex;
    std::set<FileStream*> streams;
};

int closeStream(void* stream) {
    return isOver() ? -1 : OpenStreams::instance().close(static_cast<FileStream*>(stream));
}

} // namespace

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept {
    FileStream* const file = FileStream::open(path, mode);
    if (!file)
        return nullptr;
    OpenStreams::instance().add(file);
    // FileStream itself seeks to the end for "a", since the host does not seek in streams of this kind.
    const char hostMode[] = {file->canRead() ? 'r' : 'w', file->canRead() && file->canWrite() ? '+' : '\0', '\0'};
    std::FILE* stream = fopencookie(file, hostMode, {readStream, writeStream, seekStream, closeStream});
    if (!stream)
        OpenStreams::instance().close(file);
    return stream;
}
