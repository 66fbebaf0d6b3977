#include "modules/storage/EMMCStatistics.h"

#include "OrvaUtils/IO/WindowsFileSystem.h"
#include "OrvaUtils/Xml/SettingsDocument.h"
#include "app/Paths.h"

#include <windows.h>

namespace {

using OrvaUtils::Xml::SettingsDocument;

constexpr char EMMC_ROOT[] = "EMMC";
constexpr unsigned ATTEMPTS = 3;
constexpr DWORD PAUSE = 100; // ms
// Deliberate: the divisor is not 2^32, the factor of the reading.
constexpr std::uint64_t DIVISOR = 0xFFFFFFFF;

struct CountNames {
    const char* high;
    const char* low;
};

constexpr CountNames SESSION_COUNT{"SessionWriteCountHigh", "SessionWriteCountLow"};
constexpr CountNames TOTAL_COUNT{"TotalWriteCountHigh", "TotalWriteCountLow"};
constexpr char SESSION_DURATION[] = "SessionDuration";
constexpr char TOTAL_DURATION[] = "TotalDuration";

template<typename Attempt>
// The pause also follows the last failed attempt.
void attemptSomeTimes(Attempt attempt) {
    for (unsigned failures = 0; failures < ATTEMPTS && !attempt(); ++failures) {
        Sleep(PAUSE);
    }
}

std::uint64_t readCount(const SettingsDocument& document, const CountNames& names) {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
    // A missing or malformed half stays 0.
    document.read(names.high, high);
    document.read(names.low, low);
    return (std::uint64_t{high} << 32) + low;
}

// The conversion to 32 bits cuts both halves.
void writeCount(SettingsDocument& document, const CountNames& names, std::uint64_t count) {
    document.write(names.high, static_cast<std::uint32_t>(count / DIVISOR));
    document.write(names.low, static_cast<std::uint32_t>(count));
}

// This is not the file system of the process: process exit deletes that one, possibly while a monitor still works.
OrvaUtils::IO::WindowsFileSystem ownFileSystem() {
    return {};
}

std::wstring filePath() {
    return ownFileSystem().combinePath(Paths::INSTALLATION_DIRECTORY, L"EMMC.xml");
}

} // namespace

EMMCStatistics EMMCStatistics::load() {
    EMMCStatistics statistics;
    const std::wstring path = filePath();
    // Deliberate: if the look at the file fails, the file counts as missing, without a further attempt.
    if (ownFileSystem().isFile(path)) {
        attemptSomeTimes([&] { return statistics.read(path); });
    }
    return statistics;
}

void EMMCStatistics::save(const EMMCStatistics& statistics) {
    attemptSomeTimes([&, path = filePath()] { return statistics.write(path); });
}

bool EMMCStatistics::read(const std::wstring& path) {
    SettingsDocument document(path, EMMC_ROOT);
    if (!document.open()) {
        return false;
    }
    sessionWriteCount = readCount(document, SESSION_COUNT);
    document.read(SESSION_DURATION, sessionDuration);
    totalWriteCount = readCount(document, TOTAL_COUNT);
    document.read(TOTAL_DURATION, totalDuration);
    return true;
}

bool EMMCStatistics::write(const std::wstring& path) const {
    SettingsDocument document(path, EMMC_ROOT);
    document.createEmpty();
    writeCount(document, SESSION_COUNT, sessionWriteCount);
    document.write(SESSION_DURATION, sessionDuration);
    writeCount(document, TOTAL_COUNT, totalWriteCount);
    document.write(TOTAL_DURATION, totalDuration);
    return document.save();
}
