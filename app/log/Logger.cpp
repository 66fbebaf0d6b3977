#include "app/log/Logger.h"

#include "app/Paths.h"
#include "app/log/Decimal.h"

#include <crt.h>
#include <windows.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace {

// The size of the buffer of `writeFormatted`, in characters.
constexpr std::size_t FORMATTED_LENGTH = 512;
// The greatest length of time, tick count and level.
constexpr std::size_t STAMP_LENGTH = 64;
// A line up to this length is built on the stack, a longer line on the heap.
constexpr std::size_t USUAL_LENGTH = 256;

const char* levelName(std::int32_t level) {
    switch (level) {
    case LogLevel::Display:
        return "DISPLAY";
    case LogLevel::Error:
        return "ERROR";
    case LogLevel::Info:
        return "INFO";
    case LogLevel::Debug:
        return "DEBUG";
    default:
        return "UNKNOWN";
    }
}

// The log lies below OrvaUtils and therefore has conversions of its own.
std::wstring widened(std::string_view bytes) {
    std::wstring text;
    for (const unsigned char byte : bytes) {
        text += static_cast<wchar_t>(byte);
    }
    return text;
}

// Writes a number below 100 with two digits, then the separator. Returns the end of the text.
char* putTwoDigits(char* at, unsigned number, char separator) {
    const unsigned tens = number * 205 >> 11; // a tenth; correct below 1000
    *at++ = static_cast<char>('0' + tens);
    *at++ = static_cast<char>('0' + (number - 10 * tens));
    *at++ = separator;
    return at;
}

// Writes time, tick count and level. Returns the end of the text.
char* putStamp(char* at, std::int32_t level) {
    SYSTEMTIME time;
    GetSystemTime(&time);
    at = putDecimal(at, time.wYear, 4);
    *at++ = '-';
    at = putTwoDigits(at, time.wMonth, '-');
    at = putTwoDigits(at, time.wDay, ' ');
    at = putTwoDigits(at, time.wHour, ':');
    at = putTwoDigits(at, time.wMinute, ':');
    at = putTwoDigits(at, time.wSecond, ',');
    at = putDecimal(at, GetTickCount());
    *at++ = ';';
    const char* name = levelName(level);
    do {
        *at++ = *name++;
    } while (*name != '\0');
    *at++ = ';';
    return at;
}

// Writes one byte for each character. Returns the end of the text.
char* putText(char* at, std::wstring_view text) {
    if (text.empty()) {
        return at;
    }
    const wchar_t* character = text.data();
    do {
        const auto code = static_cast<std::uint32_t>(*character);
        *at++ = code <= 0xFF ? static_cast<char>(code) : '?';
    } while (++character != text.data() + text.size());
    return at;
}

std::wstring joined(std::initializer_list<std::wstring_view> parts) {
    std::size_t length = 0;
    for (const std::wstring_view part : parts) {
        length += part.size();
    }
    std::wstring text;
    text.reserve(length);
    for (const std::wstring_view part : parts) {
        text += part;
    }
    return text;
}

// Compares the two halves of a file time.
bool isLater(const FILETIME& time, const FILETIME& other) {
    return time.dwHighDateTime != other.dwHighDateTime ? time.dwHighDateTime > other.dwHighDateTime
                                                       : time.dwLowDateTime > other.dwLowDateTime;
}

// Returns the number at the beginning of the text, if it is below the limit.
std::optional<std::int32_t> leadingNumber(std::wstring_view text, std::int32_t limit) {
    std::int64_t number = -1;
    for (const wchar_t digit : text) {
        if (digit < L'0' || digit > L'9') {
            break;
        }
        number = std::max<std::int64_t>(number, 0) * 10 + (digit - L'0');
        if (number >= limit) {
            return std::nullopt;
        }
    }
    return number < 0 ? std::nullopt : std::optional(static_cast<std::int32_t>(number));
}

// Gives a claim back.
struct Return {
    void operator()(std::atomic<std::int32_t>* claimed) const {
        *claimed = 0;
    }
};

// The right to open or change the file. One thread has the claim; the other threads do not wait for it.
using Claim = std::unique_ptr<std::atomic<std::int32_t>, Return>;

Claim claim(std::atomic<std::int32_t>& changing) {
    return Claim(changing.exchange(1) == 0 ? &changing : nullptr);
}

} // namespace

Logger::~Logger() {
    close();
}

void Logger::close() {
    // The queue is empty unless `setImmediate(false)` was called.
    for (const std::wstring& line : pending) {
        std::string bytes(line.size() + 1, '\n');
        putText(bytes.data(), line);
        output(bytes, 0, {line});
    }
    // The claim is never given back: no thread opens a file after this.
    if (changing.exchange(1) == 0 && !current.load()->isFree()) {
        current.load()->retire();
    }
}

Logger& Logger::instance() {
    // The object is never freed, and a reference has no destructor: threads may write while the process ends.
    static Logger& logger = []() -> Logger& {
        std::atexit([] { instance().close(); });
        return *new Logger;
    }();
    return logger;
}

void Logger::write(std::wstring_view message, std::int32_t level) {
    if (level <= highestLevel) {
        writeLine(level, {message});
    }
}

void Logger::write(std::string_view message, std::int32_t level) try {
    write(widened(message), level);
} catch (const std::bad_alloc&) {
    // The line does not fit into memory and is lost.
}

void Logger::writeParts(std::int32_t level, std::initializer_list<std::wstring_view> parts) {
    if (admits(level)) {
        writeLine(level, parts);
    }
}

void Logger::writeLine(std::int32_t level, std::initializer_list<std::wstring_view> parts) try {
    std::size_t length = STAMP_LENGTH + 1;
    for (const std::wstring_view part : parts) {
        length += part.size();
    }
    char usual[USUAL_LENGTH];
    const std::unique_ptr<char[]> unusual(length <= USUAL_LENGTH ? nullptr : new char[length]);
    char* const line = unusual == nullptr ? usual : unusual.get();
    char* const message = putStamp(line, level);
    char* end = message;
    for (const std::wstring_view part : parts) {
        end = putText(end, part);
    }
    *end++ = '\n';
    if (immediate) {
        output({line, end}, static_cast<std::size_t>(message - line), parts);
    } else {
        pending.push_back(widened({line, message}) + joined(parts));
    }
    if (!listeners.empty()) {
        const LogRecord record{joined(parts), level};
        for (LogListener* listener : listeners) {
            listener->receive(record);
        }
    }
} catch (const std::bad_alloc&) {
    // The line does not fit into memory and is lost.
}

void Logger::writeFormatted(const wchar_t* format, ...) {
    wchar_t buffer[FORMATTED_LENGTH] = {};
    std::va_list arguments;
    va_start(arguments, format);
    _vsnwprintf(buffer, FORMATTED_LENGTH, format, arguments);
    va_end(arguments);
    // A text that was cut fills the buffer and has no terminating zero.
    const wchar_t* end = std::find(buffer, std::end(buffer), L'\0');
    write(std::wstring_view(buffer, static_cast<std::size_t>(end - buffer)), LogLevel::Info);
}

void Logger::addListener(LogListener* listener) {
    listeners.push_back(listener);
}

void Logger::output(std::string_view bytes, std::size_t stampLength, std::initializer_list<std::wstring_view> message) {
    if (toConsole) {
        std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    }
    if (toDebugger) {
        OutputDebugStringW((widened(bytes.substr(0, stampLength)) + joined(message) + L'\n').c_str());
    }
    if (!toFile) {
        return;
    }
    LogFile::Use file = useCurrent();
    if (file == nullptr) {
        file = openFirst();
    }
    // The size is measured before each line, so without other threads a file exceeds its limit by one line at most.
    if (file != nullptr && maxFileSize != 0 && file->size() > maxFileSize) {
        rotate(file);
    }
    if (file != nullptr) {
        file->write(bytes);
    }
}

LogFile::Use Logger::useCurrent() {
    for (;;) {
        LogFile* const file = current;
        LogFile::Use use = file->use();
        // Another thread may have changed the file between the two looks. Then the new file is used.
        if (use != nullptr || file == current) {
            return use;
        }
    }
}

LogFile::Use Logger::openFirst() {
    // If another thread opens the file, this line is lost in the file.
    const Claim mine = claim(changing);
    if (mine == nullptr) {
        return nullptr;
    }
    // Another thread may have opened the file before this thread got the claim.
    LogFile::Use use = useCurrent();
    if (use == nullptr) {
        current.load()->open(pathOf(currentIndex), OPEN_ALWAYS);
        use = useCurrent();
    }
    return use;
}

void Logger::rotate(LogFile::Use& full) {
    // The two objects alternate: the older file stays open until its last user has left.
    LogFile& next = files[full.get() == &files[0] ? 1 : 0];
    const Claim mine = claim(changing);
    // The line goes to the full file if another thread rotates, has rotated, or still writes to the previous file.
    if (mine == nullptr || current != full.get() || !next.isFree()) {
        return;
    }
    const std::int32_t index = currentIndex + 1 < maxFiles ? currentIndex + 1 : 0;
    // The path is built before any change, because memory may be short.
    std::wstring path = pathOf(index);
    if (filePath.empty() && index != currentIndex) {
        full->retire();
    } else if (full->closeIfAlone()) {
        full.release();
    } else {
        // The only file must not be emptied while another thread writes to it.
        return;
    }
    next.open(std::move(path), CREATE_ALWAYS);
    currentIndex = index;
    current = &next;
    full = useCurrent();
}

std::wstring Logger::pathOf(std::int32_t index) {
    if (!filePath.empty()) {
        return filePath;
    }
    // Without a setting the log lies beside the program.
    if (directory.empty()) {
        const std::wstring program = Paths::runningExecutable();
        directory = program.substr(0, program.rfind(L'\\'));
    }
    // This is the first file of the process: it continues the file that was written last.
    if (index == -1) {
        index = currentIndex = newestIndex();
    }
    return joined({directory, L"\\", baseName, widened(std::to_string(index)), extension});
}

std::int32_t Logger::newestIndex() const {
    std::int32_t newest = 0;
    std::optional<FILETIME> newestTime;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(joined({directory, L"\\*"}).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return newest;
    }
    do {
        const std::wstring_view name = found.cFileName;
        if (!name.starts_with(baseName) || !name.ends_with(extension)) {
            continue;
        }
        const std::optional<std::int32_t> index = leadingNumber(name.substr(baseName.size()), maxFiles);
        // The file that was found first wins if two files have the same time.
        if (index && (!newestTime || isLater(found.ftLastWriteTime, *newestTime))) {
            newest = *index;
            newestTime = found.ftLastWriteTime;
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return newest;
}

void Logger::setToConsole(bool on) {
    toConsole = on;
}

void Logger::setToDebugger(bool on) {
    toDebugger = on;
}

void Logger::setToFile(bool on) {
    toFile = on;
}

void Logger::setImmediate(bool on) {
    immediate = on;
}

void Logger::setFilePath(std::wstring path) {
    filePath = std::move(path);
}

void Logger::setDirectory(std::wstring path) {
    directory = std::move(path);
}

void Logger::setBaseName(std::wstring name) {
    baseName = std::move(name);
}

void Logger::setExtension(std::wstring text) {
    extension = std::move(text);
}

void Logger::setMaxFiles(std::int32_t count) {
    maxFiles = count;
}

void Logger::setMaxFileSize(std::uint32_t bytes) {
    maxFileSize = bytes;
}

void Logger::setThreshold(std::int32_t level) {
    highestLevel = level;
}
