#include "platform/crt/FileStream.h"

#include <memory>
#include <new>

FileStream* FileStream::open(const wchar_t* path, const wchar_t* mode) {
    // "b" changes nothing: line ends are never translated.
    const wchar_t kind = mode[0];
    if (kind != L'r' && kind != L'w' && kind != L'a')
        return nullptr;
    DWORD access = kind == L'r' ? GENERIC_READ : GENERIC_WRITE;
    for (const wchar_t* letter = mode + 1; *letter; ++letter)
        if (*letter == L'+')
            access = GENERIC_READ | GENERIC_WRITE;
    const DWORD disposition = kind == L'r' ? OPEN_EXISTING : kind == L'w' ? CREATE_ALWAYS : OPEN_ALWAYS;
    const HANDLE file = CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    auto* const stream = new (std::nothrow) FileStream(file, access, kind == L'a');
    if (stream == nullptr)
        CloseHandle(file);
    return stream;
}

std::int32_t FileStream::read(char* buffer, std::size_t size) {
    DWORD count = 0;
    return ReadFile(file, buffer, static_cast<DWORD>(size), &count, nullptr) ? static_cast<std::int32_t>(count) : -1;
}

std::int32_t FileStream::write(const char* buffer, std::size_t size) {
    DWORD count = 0;
    // Each write goes to the end, even if the file has grown or the stream was positioned elsewhere.
    if (append && SetFilePointer(file, 0, nullptr, FILE_END) == INVALID_SET_FILE_POINTER)
        return 0;
    WriteFile(file, buffer, static_cast<DWORD>(size), &count, nullptr);
    return static_cast<std::int32_t>(count);
}

std::int64_t FileStream::seek(std::int64_t offset, int origin) {
    const DWORD position = SetFilePointer(file, static_cast<LONG>(offset), nullptr, static_cast<DWORD>(origin));
    return position == INVALID_SET_FILE_POINTER ? -1 : static_cast<std::int64_t>(position);
}

int FileStream::close(FileStream* stream) {
    const std::unique_ptr<FileStream> closed(stream);
    return CloseHandle(closed->file) ? 0 : -1;
}
