// The modules' settings files.
#pragma once

#include <string>

inline constexpr const char* saverSettingsPath = "\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml";
inline constexpr const char* buzzerSettingsPath = "\\MMCMemory\\Tarvex\\TouchBuzzerConfig.xml";

inline std::string saverSettings(bool enabled, int timeout, int level) {
    return "<ScreenSaver><Settings><Enabled>" + std::to_string(enabled) + "</Enabled><UserInactivityTimeout>" +
           std::to_string(timeout) + "</UserInactivityTimeout><MinLuminosityLevel>" + std::to_string(level) +
           "</MinLuminosityLevel></Settings></ScreenSaver>";
}

// As the helper writes it.
inline std::string buzzerSettings(bool enabled, int frequency) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<TouchBuzzer>\n"
           "    <Settings>\n"
           "        <Enabled>" +
           std::to_string(enabled) +
           "</Enabled>\n"
           "        <Frequency>" +
           std::to_string(frequency) +
           "</Frequency>\n"
           "    </Settings>\n"
           "</TouchBuzzer>\n";
}
