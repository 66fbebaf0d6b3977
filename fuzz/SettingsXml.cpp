// Fuzzes the settings files of the modules and the statistics. Any content must be readable, and saved settings must
// read back unchanged.
#include "fuzz/FuzzPanel.h"
#include "modules/buzzer/TouchBuzzerConfig.h"
#include "modules/screensaver/ScreenSaverConfig.h"
#include "modules/storage/EMMCStatistics.h"

namespace {

// Fixed path of the statistics; the other files can have any path.
constexpr const char* FILE_PATH = "\\MMCMemory\\Tarvex\\EMMC.xml";
constexpr const wchar_t* PATH = L"\\MMCMemory\\Tarvex\\EMMC.xml";

// Some large counts deliberately grow when they are saved, so these inputs are skipped.
bool isKept(std::uint64_t count, std::uint64_t saved) {
    return saved == count || (count >> 32) + (count & 0xFFFFFFFF) >= 0xFFFFFFFF;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::putFile(FILE_PATH, data, size);
    ScreenSaverConfig saver;
    const bool complete = saver.read(PATH);
    TouchBuzzerConfig buzzer;
    if (buzzer.read(PATH)) {
        fuzz::require(buzzer.write(PATH), "settings that cannot be written");
        TouchBuzzerConfig again;
        fuzz::require(again.read(PATH), "settings that cannot be read again");
        fuzz::require(again.enabled == buzzer.enabled && again.frequency == buzzer.frequency,
                      "settings that change by being saved");
        fuzz::require(!ScreenSaverConfig().read(PATH), "settings under a foreign root");
        fuzz::putFile(FILE_PATH, data, size);
    }
    const EMMCStatistics statistics = EMMCStatistics::load();
    EMMCStatistics::save(statistics);
    const EMMCStatistics saved = EMMCStatistics::load();
    fuzz::require(isKept(statistics.sessionWriteCount, saved.sessionWriteCount) &&
                      isKept(statistics.totalWriteCount, saved.totalWriteCount) &&
                      statistics.sessionDuration == saved.sessionDuration &&
                      statistics.totalDuration == saved.totalDuration,
                  "statistics that change by being saved");
    fuzz::putFile(FILE_PATH, data, size);
    fuzz::require(ScreenSaverConfig().read(PATH) == complete, "settings that are read at times");
    return 0;
}
