#pragma once

#include "app/log/LogFile.h"
#include "app/log/LogListener.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// A lower level is more important.
namespace LogLevel {
inline constexpr std::int32_t Display = 0;
inline constexpr std::int32_t Error = 1;
inline constexpr std::int32_t Info = 2;
inline constexpr std::int32_t Debug = 3;
} // namespace LogLevel

// The log: one line a message, to up to three outputs.
//
//     2024-03-07 06:05:09,8532110;INFO;Init of Helper
//
// The time is UTC; the number after the comma is the tick count since the system started, deliberately the whole of it.
// The outputs are a set of rotating files, the debugger and the standard output. A file holds one byte a character;
// characters that need more become "?".
//
// Logging never fails: a line that cannot be written to the file is lost there, a line that memory is too short for is
// lost altogether, and nobody is told.
//
// Any thread may write at any time, and none waits for another: there is no lock. One thread at a time changes the
// file. A line that another thread writes meanwhile goes to the older file, which then exceeds its limit by more than
// one line; while there is no file, it is lost. With one file alone, only a thread that is the only one to write then
// empties it, and the file grows until there is one. The settings, listeners and the queue are for one thread: the log
// is set up before other threads write.
class Logger {
public:
    // A log with the defaults below. The program uses the one of `instance`.
    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    // Outputs what is queued and closes the file.
    ~Logger();

    // The log of the process, made at the first call. At the process's exit it does what the destructor does, but stays
    // in memory: threads that go on may write to it, and no file takes their lines any more.
    static Logger& instance();

    // Whether there is any output or listener.
    bool isEnabled() const {
        return toFile || toConsole || toDebugger || !listeners.empty();
    }
    // The least important level that is written.
    std::int32_t threshold() const {
        return highestLevel;
    }
    // Whether a message of this level is worth building.
    bool admits(std::int32_t level) const {
        return isEnabled() && threshold() >= level;
    }

    // Writes a line if its level is at most the threshold. The second form widens each byte to one character.
    void write(std::wstring_view message, std::int32_t level);
    void write(std::string_view message, std::int32_t level);
    // Joins the parts and writes them; nothing is built unless the level is admitted.
    void writeParts(std::int32_t level, std::initializer_list<std::wstring_view> parts);
    // Formats up to 512 characters and writes them at Info; the rest is cut.
    void writeFormatted(const wchar_t* format, ...);

    // Listeners are not owned and are called in the order of their registration.
    void addListener(LogListener* listener);

    void setToConsole(bool on); // off
    void setToDebugger(bool on); // off
    void setToFile(bool on); // on
    // Off: lines are kept in memory until the log's end. On by default.
    void setImmediate(bool on);
    // The complete path of the one file; empty, the default: the files are named by the following settings.
    void setFilePath(std::wstring path);
    // It is not created here. Empty, the default: that of the running program.
    void setDirectory(std::wstring path);
    // A file is called base name, index, extension: "log", 0 to maxFiles - 1, ".txt". Writing goes on in the file that
    // was written last.
    void setBaseName(std::wstring name);
    void setExtension(std::wstring text);
    void setMaxFiles(std::int32_t count); // 1
    // In bytes: when the file has become larger, the next line starts the next file anew. 0, the default: no limit.
    void setMaxFileSize(std::uint32_t bytes);
    void setThreshold(std::int32_t level); // Info

private:
    void close();
    void writeLine(std::int32_t level, std::initializer_list<std::wstring_view> parts);
    // `bytes` is the whole line; what is behind its stamp also comes as wide text.
    void output(std::string_view bytes, std::size_t stampLength, std::initializer_list<std::wstring_view> message);
    LogFile::Use useCurrent();
    LogFile::Use openFirst();
    void rotate(LogFile::Use& full);
    std::wstring pathOf(std::int32_t index); // -1: of the file that was written last
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
    LogFile files[2]; // the current one, and the one before it until nobody writes to it
    std::atomic<LogFile*> current = &files[0];
    std::atomic<std::int32_t> changing = 0; // 1: a thread opens a file, or the log is closed
    std::int32_t currentIndex = -1; // not yet determined
    std::vector<std::wstring> pending;
    std::vector<LogListener*> listeners;
};
