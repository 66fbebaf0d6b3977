// The text of "config.xml", as the helper writes it.
#pragma once

#include <string>
#include <vector>

inline constexpr const char* settingsPath = "\\MMCMemory\\Tarvex\\config.xml";

// With these directories to clean up; `restores` are whole lines.
inline std::string settingsFile(int logLevel, const std::vector<std::string>& directories = {},
                                const std::string& restores = {}) {
    std::string lines;
    for (const std::string& directory : directories)
        lines += "            <Directory Name=\"" + directory + "\"/>\n";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<OrvaTarvex Version=\"1\">\n    <Settings>\n"
           "        <Parameters LogLevel=\"" +
           std::to_string(logLevel) + "\"/>\n        <CleanupDirectories" +
           (lines.empty() ? "/>\n" : ">\n" + lines + "        </CleanupDirectories>\n") + "    </Settings>\n" +
           restores + "</OrvaTarvex>\n";
}
