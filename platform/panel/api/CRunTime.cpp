// Streams of crt.h over the simulated files. They pass no gate; what a stream does with its file, does.
#include "platform/crt/FileStream.h"
#include "platform/panel/kernel/Wait.h"

#include <crt.h>

#include <mutex>
#include <set>

namespace {

// The host closes what a program has left open when its process has long ended on the panel: nothing is done then. A
// thread that was still at work does not go on.
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

// Those that are open: the leak check does not see that the host's streams know them. Never destroyed, as a thread may
// be at work while the process ends.
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
    // Opened with the host's mode: without "a", since the host does not seek for streams of this kind.
    const char hostMode[] = {file->canRead() ? 'r' : 'w', file->canRead() && file->canWrite() ? '+' : '\0', '\0'};
    std::FILE* stream = fopencookie(file, hostMode, {readStream, writeStream, seekStream, closeStream});
    if (!stream)
        OpenStreams::instance().close(file);
    return stream;
}
