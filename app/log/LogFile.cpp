#include "app/log/LogFile.h"

#include <utility>

namespace {

// Sharing lets other programs read the log while it is open.
HANDLE openShared(const std::wstring& path, DWORD access, DWORD disposition) {
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

void LogFile::open(std::wstring pathOfFile, DWORD disposition) {
    path = std::move(pathOfFile);
    handle = openShared(path, GENERIC_WRITE, disposition);
    users = handle == INVALID_HANDLE_VALUE ? 0 : 1;
}

bool LogFile::isFree() const {
    return users == 0;
}

LogFile::Use LogFile::use() {
    // The count rises only from a value above 0: a file without users is closed and must not be used.
    std::int32_t count = users;
    while (count != 0 && !users.compare_exchange_weak(count, count + 1)) {
    }
    return Use(count == 0 ? nullptr : this);
}

void LogFile::retire() {
    // The handle is copied first: as soon as the count is 0, another thread may open the next file here.
    const HANDLE closed = handle;
    if (--users == 0) {
        CloseHandle(closed);
    }
}

bool LogFile::closeIfAlone() {
    // 2 users are the log and the calling thread. The exchange succeeds only if no other thread uses the file.
    std::int32_t logAndCaller = 2;
    if (!users.compare_exchange_strong(logAndCaller, 0)) {
        return false;
    }
    CloseHandle(handle);
    return true;
}

void LogFile::Leave::operator()(LogFile* file) const {
    file->retire();
}

std::uint32_t LogFile::size() const {
    // The file that the path names now is measured. It is opened a second time, for reading.
    const HANDLE file = openShared(path, GENERIC_READ, OPEN_EXISTING);
    const bool opened = file != INVALID_HANDLE_VALUE;
    // The log must keep its limit even if the process has no free handle: the log's own handle then gives the size.
    const DWORD end = SetFilePointer(opened ? file : handle, 0, nullptr, FILE_END);
    if (opened) {
        CloseHandle(file);
    }
    return end == INVALID_SET_FILE_POINTER ? 0 : end;
}

void LogFile::write(std::string_view bytes) {
    // A file is opened at its beginning; lines go to its end.
    if (SetFilePointer(handle, 0, nullptr, FILE_END) != INVALID_SET_FILE_POINTER) {
        DWORD written = 0;
        WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    }
}
