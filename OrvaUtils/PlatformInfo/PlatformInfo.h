#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace OrvaUtils {

// The device that the program runs on: its name, platform type, model and GUID.
//
// The model code and the GUID come from the panel's tag store. Tag 18 holds the model code in 2 bytes, low byte first.
// Tag 48 holds the GUID in 16 bytes. A longer tag counts with its first bytes; a shorter tag counts as missing.
//
// The first call that needs the model code or the GUID reads both tags. A value that was read is kept for the life of
// the process. A value that could not be read is tried again by the next call that needs it. The object has no lock:
// one thread at a time may call.
class PlatformInfo {
public:
    using Guid = std::array<std::uint8_t, 16>;

    // Returns the one object of the process. The first call creates it and reads nothing.
    static PlatformInfo& instance();

    PlatformInfo(const PlatformInfo&) = delete;
    PlatformInfo& operator=(const PlatformInfo&) = delete;

    // Returns the name of the device: the registry value "Name" of HKEY_LOCAL_MACHINE\Ident. Each character becomes one
    // byte; characters above 0xFF become "?". Throws Registry::RegistryException if the value is missing or not a
    // REG_SZ.
    static std::string getDeviceName();

    // Returns 2, the type of the panels that this program is for.
    std::uint32_t getPlatformType() const;
    // Returns the name of a platform type: 1 "WinCE-X86", 2 "WinCE-ARM", 3 "Win32", 4 "Win64". Throws
    // PlatformInfoException "Unexpected platform type" for any other number.
    static std::string platformTypeToString(std::uint32_t type);
    // Returns the number of a platform type by its name. The comparison is case-sensitive. Throws PlatformInfoException
    // "Unexpected platform type" for any other name.
    static std::uint32_t platformTypeFromString(std::string_view name);

    // Returns the model code of the panel, or 0 if it cannot be read. Does not throw for a missing or broken tag store.
    std::uint16_t getModelCode();
    // Returns the name of a model, or "unknown". Only the low 16 bits of the code count. The 31 codes 1 to 22 and 0x400
    // to 0x408 have names. This project has invented these names. The names that the models have in the field are not
    // known here.
    static std::wstring getModelName(std::uint32_t code);

    // Returns the identity of the panel. Throws PlatformInfoException "Guid not present" if it cannot be read.
    Guid getGuid();

private:
    PlatformInfo() = default;
    // Reads the missing values with one connection to the tag store.
    void load();

    const std::uint32_t platformType = 2;
    bool modelPresent = false;
    bool guidPresent = false;
    std::uint16_t modelCode = 0;
    Guid guid{};
};

} // namespace OrvaUtils
