#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace OrvaUtils {

// What device the program runs on.
//
// Model code and GUID come from the panel's tag store, tags 18 (2 bytes, the lower one first) and 48 (16 bytes). They
// are read together by a call that needs one of them and does not have it yet; either is read also without the other.
// Of a longer tag the first bytes count, a shorter one counts as none. While one of them cannot be read, whatever the
// reason, each call that needs it tries again; the model code is 0 until then. For one thread at a time.
class PlatformInfo {
public:
    using Guid = std::array<std::uint8_t, 16>;

    // What is known of this device; made at the first call.
    static PlatformInfo& instance();

    PlatformInfo(const PlatformInfo&) = delete;
    PlatformInfo& operator=(const PlatformInfo&) = delete;

    // The device's name from the registry ("Ident"), one byte a character, "?" for one above 0xFF. Throws
    // Registry::RegistryException without one.
    static std::string getDeviceName();

    // 2: the panels that this program is for.
    std::uint32_t getPlatformType() const;
    // 1 "WinCE-X86", 2 "WinCE-ARM", 3 "Win32", 4 "Win64"; names are compared exactly. Both throw PlatformInfoException
    // "Unexpected platform type" for any other.
    static std::string platformTypeToString(std::uint32_t type);
    static std::uint32_t platformTypeFromString(std::string_view name);

    // Never throws for a tag store that is missing or broken: 0 then.
    std::uint16_t getModelCode();
    // The name of a model, by the low 16 bits of the code; "unknown" for a code without a name. There are 31: for 1 to
    // 22 and for 0x400 to 0x408. These names are this project's own choice, made up for it, and no maker's: what the
    // models are called in the field is not known here.
    static std::wstring getModelName(std::uint32_t code);

    // The panel's identity. Throws PlatformInfoException "Guid not present" when the tag store has none, or could not
    // be read.
    Guid getGuid();

private:
    PlatformInfo() = default;
    void load();

    const std::uint32_t platformType = 2;
    bool modelPresent = false;
    bool guidPresent = false;
    std::uint16_t modelCode = 0;
    Guid guid{};
};

} // namespace OrvaUtils
