#pragma once

#include <cstdint>
#include <string>

// The settings file "ScreenSaverConfig.xml" of the screen saver. The helper never writes it.
//
//     <ScreenSaver>
//         <Settings>
//             <Enabled>1</Enabled>
//             <UserInactivityTimeout>300000</UserInactivityTimeout>
//             <MinLuminosityLevel>32</MinLuminosityLevel>
class ScreenSaverConfig {
public:
    // Reads the file into the fields. Returns false if the file cannot be read, or a value is missing or cannot be
    // converted; the fields are then not valid. Ranges are not checked.
    bool read(const std::wstring& path);

    bool enabled = false;
    std::int32_t userInactivityTimeout = 0; // ms
    std::int32_t minLuminosityLevel = 0; // 0 to 255; 0: the black window
};
