#pragma once

#include <cstdint>
#include <string>

// The settings file "ScreenSaverConfig.xml". Nobody but a person writes it.
//
//     <ScreenSaver>
//         <Settings>
//             <Enabled>1</Enabled>
//             <UserInactivityTimeout>300000</UserInactivityTimeout>
//             <MinLuminosityLevel>32</MinLuminosityLevel>
class ScreenSaverConfig {
public:
    // Reads the file. False when it cannot be read or one of the values is missing or of another kind; the fields then
    // count for nothing. Ranges are not checked.
    bool read(const std::wstring& path);

    bool enabled = false;
    std::int32_t userInactivityTimeout = 0; // ms
    std::int32_t minLuminosityLevel = 0; // 0 to 255; 0: the black screen
};
