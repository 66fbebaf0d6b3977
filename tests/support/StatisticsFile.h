// The text of "EMMC.xml", as the helper writes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

inline constexpr const char* statisticsPath = "\\MMCMemory\\Tarvex\\EMMC.xml";

// With these texts in its elements, as far as there are any; "-": without that one.
inline std::string statisticsFile(const std::vector<std::string>& texts) {
    const char* names[] = {"SessionWriteCountHigh", "SessionWriteCountLow", "SessionDuration",
                           "TotalWriteCountHigh",   "TotalWriteCountLow",   "TotalDuration"};
    std::string content = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<EMMC>\n    <Settings>\n";
    for (std::size_t index = 0; index < texts.size(); ++index)
        if (texts[index] != "-")
            content += std::string("        <") + names[index] + '>' + texts[index] + "</" + names[index] + ">\n";
    return content + "    </Settings>\n</EMMC>\n";
}

// With these values, durations in seconds; the upper half of the session's count is 0.
inline std::string statisticsFile(std::uint32_t sessionCount, std::uint32_t sessionDuration, std::uint32_t totalCount,
                                  std::uint32_t totalDuration, std::uint32_t totalCountHigh = 0) {
    return statisticsFile({"0", std::to_string(sessionCount), std::to_string(sessionDuration),
                           std::to_string(totalCountHigh), std::to_string(totalCount), std::to_string(totalDuration)});
}
