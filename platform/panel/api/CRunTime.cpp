// The wide C run-time functions of crt.h. They pass no gate; what a stream does with its file, does.
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Wait.h"

#include <crt.h>
#include <windows.h>

#include <memory>

using namespace panel;

namespace {

struct Stream {
    HANDLE file;
    bool append;
};

// The host closes what a program has left open when its process has long ended on the panel: nothing is done then.

ssize_t readStream(void* cookie, char* buffer, std::size_t size) {
    DWORD count = 0;
    const auto* stream = static_cast<Stream*>(cookie);
    if (processEnded)
        return -1;
    return ReadFile(stream->file, buffer, static_cast<DWORD>(size), &count, nullptr) ? static_cast<ssize_t>(count) : -1;
}

ssize_t writeStream(void* cookie, const char* buffer, std::size_t size) {
    const auto* stream = static_cast<Stream*>(cookie);
    DWORD count = 0;
    if (processEnded)
        return 0;
    if (stream->append && SetFilePointer(stream->file, 0, nullptr, FILE_END) == INVALID_SET_FILE_POINTER)
        return 0;
    WriteFile(stream->file, buffer, static_cast<DWORD>(size), &count, nullptr);
    return static_cast<ssize_t>(count); // fewer than asked for is the error
}

int seekStream(void* cookie, off64_t* offset, int origin) {
    const auto* stream = static_cast<Stream*>(cookie);
    if (processEnded)
        return -1;
    const DWORD position =
        SetFilePointer(stream->file, static_cast<LONG>(*offset), nullptr, static_cast<DWORD>(origin));
    *offset = position;
    return position == INVALID_SET_FILE_POINTER ? -1 : 0;
}

int closeStream(void* cookie) {
    const std::unique_ptr<Stream> stream(static_cast<Stream*>(cookie));
    return !processEnded && CloseHandle(stream->file) ? 0 : -1;
}

// One conversion of a format: "%", flags, width, precision, length, and the letter.
struct Conversion {
    std::string narrow = "%";
    std::size_t length = 0; // of the conversion in the format
    int longs = 0;
    char letter = 0;
};

Conversion parse(const std::string& format, std::size_t at) {
    Conversion conversion;
    const std::size_t start = at++;
    while (at < format.size() && std::string_view("-+ #0123456789.").find(format[at]) != std::string_view::npos)
        conversion.narrow += format[at++];
    for (; at < format.size() && (format[at] == 'l' || format[at] == 'h'); ++at)
        conversion.longs += format[at] == 'l';
    if (at < format.size())
        conversion.letter = format[at++];
    conversion.length = at - start;
    return conversion;
}

template<class Value>
std::string formatted(const std::string& format, Value value) {
    const int length = std::snprintf(nullptr, 0, format.c_str(), value);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format.c_str(), value);
    text.pop_back();
    return text;
}

} // namespace

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept {
    const std::string wanted = toUtf8(mode);
    const bool plus = wanted.find('+') != std::string::npos;
    const char kind = wanted.empty() ? '\0' : wanted[0];
    if (kind != 'r' && kind != 'w' && kind != 'a')
        return nullptr;
    DWORD access = kind == 'r' ? GENERIC_READ : GENERIC_WRITE;
    if (plus)
        access = GENERIC_READ | GENERIC_WRITE;
    const DWORD disposition = kind == 'r' ? OPEN_EXISTING : kind == 'w' ? CREATE_ALWAYS : OPEN_ALWAYS;
    const HANDLE file = CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    auto cookie = std::make_unique<Stream>(Stream{file, kind == 'a'});
    // Opened with the host's mode: without "a", since the host does not seek for streams of this kind.
    const std::string hostMode = std::string(1, kind) + (plus ? "+" : "");
    std::FILE* stream = fopencookie(cookie.get(), hostMode.c_str(), {readStream, writeStream, seekStream, closeStream});
    if (!stream) {
        CloseHandle(file);
        return nullptr;
    }
    static_cast<void>(cookie.release()); // the stream's now
    return stream;
}

int _wcsicmp(const wchar_t* first, const wchar_t* second) noexcept {
    const auto lower = [](wchar_t character) {
        const auto code = static_cast<std::uint32_t>(character);
        const bool upper = (code >= 'A' && code <= 'Z') || (code >= 0xC0 && code <= 0xDE && code != 0xD7);
        return upper ? code + 32 : code;
    };
    while (*first && lower(*first) == lower(*second)) {
        ++first;
        ++second;
    }
    const auto left = lower(*first);
    const auto right = lower(*second);
    return left < right ? -1 : left > right;
}

long _wtol(const wchar_t* text) noexcept {
    while (*text == L' ' || *text == L'\t')
        ++text;
    const bool negative = *text == L'-';
    if (*text == L'-' || *text == L'+')
        ++text;
    std::uint32_t value = 0; // long has 32 bits there, and wraps
    for (; *text >= L'0' && *text <= L'9'; ++text)
        value = value * 10 + static_cast<std::uint32_t>(*text - L'0');
    return static_cast<std::int32_t>(negative ? 0 - value : value);
}

int _vsnwprintf(wchar_t* buffer, std::size_t count, const wchar_t* format, std::va_list arguments) noexcept {
    const std::string text = toUtf8(format);
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '%') {
            result += text[at++];
            continue;
        }
        const Conversion conversion = parse(text, at);
        at += conversion.length;
        const std::string& narrow = conversion.narrow;
        switch (conversion.letter) {
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X': {
            // "%ld" is 32 bits wide on the platform, and pushed as what the machine calls long here.
            const auto length = conversion.longs == 0 ? "" : "l";
            const std::string whole = narrow + length + conversion.letter;
            result +=
                conversion.longs ? formatted(whole, va_arg(arguments, long)) : formatted(whole, va_arg(arguments, int));
            break;
        }
        case 's': {
            const auto* value = va_arg(arguments, const wchar_t*);
            result += formatted(narrow + 's', value ? toUtf8(value).c_str() : "(null)");
            break;
        }
        case 'c': {
            const auto value = static_cast<wchar_t>(va_arg(arguments, int));
            result += toUtf8(&value, 1);
            break;
        }
        case '%':
            result += '%';
            break;
        default: // not a conversion that this system uses
            result += text.substr(at - conversion.length, conversion.length);
        }
    }
    std::wstring_view::size_type length = 0;
    const auto wide = std::make_unique<wchar_t[]>(result.size() + 1);
    length = toWide(result, wide.get(), result.size() + 1);
    const bool fits = length <= count;
    for (std::size_t index = 0; index < std::min(length, count); ++index)
        buffer[index] = wide[index];
    if (length < count)
        buffer[length] = 0;
    return fits ? static_cast<int>(length) : -1;
}
