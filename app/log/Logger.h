#pragma once

#include "app/log/LogFile.h"
#include "app/log/LogListener.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// The levels of log lines. A lower number is more important.
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
// Errors: logging never fails and never reports a failure of its own. A line that cannot be written to the file is lost
// in the file. A line that does not fit into memory is lost completely.
//
// Threads: any thread may write at any time. There is no lock, and no thread waits for another thread. One thread at a
// time opens or changes the file. Lines that other threads write meanwhile go to the older file, which then exceeds its
// limit by more than one line; while no file is open, such lines are lost. If there is only one file, a thread can
// empty it only while no other thread writes; until then the file grows. The settings, the listeners and the queue have
// no protection: configure the log before other threads write.
class Logger {
public:
    // Creates a log with the defaults given at the setters. Program code uses `instance`.
    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    // Outputs the queued lines and closes the file.
    ~Logger();

    // Returns the log of the process. The first call creates it. At process exit it outputs its queued lines and closes
    // its file, but stays in memory: threads that still run may write, and their lines are lost in the file.
    static Logger& instance();

    // Tells whether there is any output or listener.
    bool isEnabled() const {
        return toFile || toConsole || toDebugger || !listeners.empty();
    }
    // Returns the highest level that is written.
    std::int32_t threshold() const {
        return highestLevel;
    }
    // Tells whether a message of this level should be built.
    bool admits(std::int32_t level) const {
        return isEnabled() && threshold() >= level;
    }

    // Writes a line if its level is at most the threshold. The second form makes each byte one character.
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
    // Outputs each line at once. On by default. Off keeps the lines in memory until the log ends.
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
    // Sets the limit of a file in bytes. When a file has become larger, the next line empties and begins the next file.
    // 0, the default, means no limit.
    void setMaxFileSize(std::uint32_t bytes);
    // Sets the highest level that is written, Info by default.
    void setThreshold(std::int32_t level);

private:
    void close();
    void writeLine(std::int32_t level, std::initializer_list<std::wstring_view> parts);
    // `bytes` is the whole line; what is behind its stamp also comes as wide text.
    void output(std::string_view bytes, std::size_t stampLength, std::initializer_list<std::wstring_view> message);
    LogFile::Use useCurrent();
    // Opens the first file, unless another thread is doing that.
    LogFile::Use openFirst();
    // Changes to the next file, unless another thread is doing that.
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
    LogFile files[2]; // the current file, and the file before it until its last user has left
    std::atomic<LogFile*> current = &files[0];
    std::atomic<std::int32_t> changing = 0; // 1: a thread changes the file, or the log is closed
    std::int32_t currentIndex = -1; // -1: not determined yet
    std::vector<std::wstring> pending;
    std::vector<LogListener*> listeners;
};
