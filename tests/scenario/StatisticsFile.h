#pragma once

#include <cstdint>
#include <string>

inline constexpr const char* statisticsPath = "\\MMCMemory\\Tarvex\\EMMC.xml";

// The file with these values, durations in seconds; the upper half of the session's count is 0.
inline std::string statisticsFile(std::uint32_t sessionCount, std::uint32_t sessionDuration, std::uint32_t totalCount,
                                  std::uint32_t totalDuration, std::uint32_t totalCountHigh = 0) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<EMMC>\n    <Settings>\n";
    const auto add = [&](const std::string& name, std::uint32_t value) {
        text += "        <" + name + '>' + std::to_string(value) + "</" + name + ">\n";
    };
    add("SessionWriteCountHigh", 0);
    add("SessionWriteCountLow", sessionCount);
    add("SessionDuration", sessionDuration);
    add("TotalWriteCountHigh", totalCountHigh);
    add("TotalWriteCountLow", totalCount);
    add("TotalDuration", totalDuration);
    return text + "    </Settings>\n</EMMC>\n";
}
