#pragma once

#include "app/log/LogFile.h"
#include "app/log/LogListener.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// The levels of log lines. A lower number is more important. The log shows any other number as UNKNOWN.
namespace LogLevel {
inline constexpr std::int32_t Display = 0;
inline constexpr std::int32_t Error = 1;
inline constexpr std::int32_t Info = 2;
inline constexpr std::int32_t Debug = 3;
} // namespace LogLevel

// The log: it writes one line for each message, to up to three outputs.
//
//     2024-03-07 06:05:09,8532110;INFO;Init of Helper
//
// The time is UTC. The number after the comma is deliberately the whole tick count: the milliseconds since the system
// started. The outputs are a set of rotating files, the debugger and the standard output. A file holds one byte per
// character; characters above 0xFF become "?".
//
// Errors: the log does not report failures of its own. If a line cannot be written to the file, the file lacks the
// line; the other outputs still get it. If memory is short, the line is lost in all outputs.
//
// Threads: any thread may write at any time. There is no lock, and no thread waits for another thread. Only one thread
// at a time opens a file or rotates to the next file. If other threads write during a rotation, their lines go to the
// previous file, which may then exceed its limit by several lines. If other threads write while the first file is being
// opened, their lines are lost. If there is only one file (`setMaxFiles`), it can be emptied only while no other thread
// writes; until then it grows beyond its limit. The operations that change settings or listeners are not
// thread-safe: call them before other threads write. After `setImmediate(false)` only one thread may write.
class Logger {
public:
    // Creates a log with the defaults given at the setters. Program code uses `instance`.
    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    // Outputs the lines that `setImmediate(false)` has kept in memory, and closes the file.
    ~Logger();

    // Returns the log of the process. The first call creates the log. Process exit outputs the lines that are kept in
    // memory and closes the file. The object itself is never freed: threads that still run may call it, but their lines
    // do not reach the file any more.
    static Logger& instance();

    // Returns true if at least one output is on or one listener is registered.
    bool isEnabled() const {
        return toFile || toConsole || toDebugger || !listeners.empty();
    }
    // Returns the highest level that is written.
    std::int32_t threshold() const {
        return highestLevel;
    }
    // Returns true if a line of this level would be written. Otherwise the caller need not build its text.
    bool admits(std::int32_t level) const {
        return isEnabled() && threshold() >= level;
    }

    // Writes a line if `level` is at most the threshold. The second overload converts each byte to the character of the
    // same value.
    void write(std::wstring_view message, std::int32_t level);
    void write(std::string_view message, std::int32_t level);
    // Joins the parts and writes them as one line. Builds nothing if the level is not admitted.
    void writeParts(std::int32_t level, std::initializer_list<std::wstring_view> parts);
    // Formats a text and writes it at INFO. The text is cut after 512 characters.
    void writeFormatted(const wchar_t* format, ...);

    // Adds a listener, which is not owned. The log calls listeners in the order of registration.
    void addListener(LogListener* listener);

    // Writes lines to the standard output. Off by default.
    void setToConsole(bool on);
    // Writes lines to the debugger with OutputDebugStringW. Off by default.
    void setToDebugger(bool on);
    // Writes lines to the file. On by default.
    void setToFile(bool on);
    // Outputs each line at once. On by default. If this is off, the log keeps all lines in memory and outputs them when
    // it is destroyed.
    void setImmediate(bool on);
    // Sets the complete path of a single file, which replaces the file names described below. Empty by default.
    void setFilePath(std::wstring path);
    // Sets the directory of the files. The log does not create the directory. By default the directory of the running
    // program.
    void setDirectory(std::wstring path);
    // Sets the beginning of the file names, "log" by default. A file name is base name, index (0 to maxFiles - 1),
    // extension. The log continues the file that was written last.
    void setBaseName(std::wstring name);
    // Sets the end of the file names, ".txt" by default.
    void setExtension(std::wstring text);
    // Sets the number of rotating files, 1 by default.
    void setMaxFiles(std::int32_t count);
    // Sets the limit of a file in bytes; 0, the default, means no limit. If the current file is larger than the limit
    // when a line is to be written, the log first empties the next file and writes the line there.
    void setMaxFileSize(std::uint32_t bytes);
    // Sets the highest level that is written, Info by default.
    void setThreshold(std::int32_t level);

private:
    void close();
    void writeLine(std::int32_t level, std::initializer_list<std::wstring_view> parts);
    // `bytes` is the whole line; its first `stampLength` bytes are time, tick count and level. `message` holds the
    // parts of the message as wide text.
    void output(std::string_view bytes, std::size_t stampLength, std::initializer_list<std::wstring_view> message);
    // Acquires the current file for writing. Returns null while no file is open.
    LogFile::Use useCurrent();
    // Opens the first file, unless another thread is doing so.
    LogFile::Use openFirst();
    // Rotates to the next file, unless another thread is doing so.
    void rotate(LogFile::Use& full);
    // Returns the path of the file with this index. -1 means the file that was written last.
    std::wstring pathOf(std::int32_t index);
    std::int32_t newestIndex() const;

    bool toConsole = false;
    bool toDebugger = false;
    bool toFile = true;
    bool immediate = true;
    std::wstring filePath;
    std::wstring directory;
    std::wstring baseName = L"log";
    std::wstring extension = L".txt";
    std::int32_t maxFiles = 1;
    std::uint32_t maxFileSize = 0;
    std::int32_t highestLevel = LogLevel::Info;
    LogFile files[2]; // the current file, and the previous file as long as a thread still writes to it
    std::atomic<LogFile*> current = &files[0];
    std::atomic<std::int32_t> changing = 0; // 1: a thread opens or rotates a file, or the log is closed
    std::int32_t currentIndex = -1; // -1: not determined yet
    std::vector<std::wstring> pending;
    std::vector<LogListener*> listeners;
};
