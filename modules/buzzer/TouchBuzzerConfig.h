#pragma once

#include <cstdint>
#include <string>

// The settings file "TouchBuzzerConfig.xml" of the touch buzzer.
//
//     <TouchBuzzer>
//         <Settings>
//             <Enabled>1</Enabled>
//             <Frequency>3400</Frequency>
class TouchBuzzerConfig {
public:
    // Reads the file into the fields. Returns false if the file cannot be read, or a value is missing or cannot be
    // converted; the fields are then not valid. Ranges are not checked.
    bool read(const std::wstring& path);
    // Replaces the file with the fields. The result is that of saveDocument. Throws std::bad_alloc, and leaves the file
    // unchanged, if the document does not fit into memory.
    bool write(const std::wstring& path) const;

    bool enabled = false;
    std::int32_t frequency = 3400; // Hz; negative: the default of the panel's model
};
