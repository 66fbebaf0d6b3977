#pragma once

#include <cstdint>
#include <string>

// The settings file "TouchBuzzerConfig.xml".
//
//     <TouchBuzzer>
//         <Settings>
//             <Enabled>1</Enabled>
//             <Frequency>3400</Frequency>
class TouchBuzzerConfig {
public:
    // Reads the file. False when it cannot be read or one of the values is missing or of another kind; the fields then
    // count for nothing. The frequency's range is not checked.
    bool read(const std::wstring& path);
    // Replaces the file. False when that fails: see saveDocument. Throws std::bad_alloc when there is no memory for
    // the document; the file is then as it was.
    bool write(const std::wstring& path) const;

    bool enabled = false;
    std::int32_t frequency = 3400; // Hz; negative: the panel's own
};
