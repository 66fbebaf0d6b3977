#include "platform/tool/Ansi.h"

#include <algorithm>
#include <iterator>

namespace tool {

using panel::registry::Bytes;

namespace {

// The characters 0x80 to 0x9F of the code page 1252. All others have the numbers of Latin-1.
constexpr char16_t windowsCharacters[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                          0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                          0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                          0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

Bytes widened(const Bytes& ansi) {
    Bytes wide;
    for (const std::uint8_t byte : ansi) {
        const char16_t unit = byte >= 0x80 && byte <= 0x9F ? windowsCharacters[byte - 0x80] : byte;
        wide.push_back(static_cast<std::uint8_t>(unit));
        wide.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return wide;
}

bool narrow(const Bytes& wide, Bytes& ansi) {
    for (std::size_t at = 0; at + 1 < wide.size(); at += 2) {
        const auto unit = static_cast<char16_t>(wide[at] | wide[at + 1] << 8);
        const auto* found = std::find(std::begin(windowsCharacters), std::end(windowsCharacters), unit);
        const bool special = found != std::end(windowsCharacters);
        if (!special && (unit > 0xFF || (unit >= 0x80 && unit <= 0x9F)))
            return false;
        ansi.push_back(static_cast<std::uint8_t>(special ? 0x80 + (found - windowsCharacters) : unit));
    }
    return wide.size() % 2 == 0;
}

} // namespace tool
