// Conversions and comparison of wide text. Only the log, which lies below this library, has conversions of its own. The
// functions have no state: any thread may call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace OrvaUtils {

// Convert UTF-8 to wide text and back. They do not fail: each invalid sequence becomes U+FFFD. Invalid sequences are
// broken UTF-8 on the one side, and unpaired surrogates and values above U+10FFFF on the other side.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view text);

// Convert the text of platform records (registry data, driver and partition records) to wide text and back. These
// records hold 16 bits per character, little-endian. Zeros are characters like any other; an odd last byte is ignored.
// Sizes are in bytes. The functions do not fail, and keep unpaired surrogates.
std::wstring fromText16(const std::uint8_t* bytes, std::size_t size);
std::vector<std::uint8_t> toText16(std::wstring_view text);

// Convert each byte to the character of the same value, and back. Characters above 0xFF become "?".
std::wstring widen(std::string_view bytes);
std::string narrow(std::wstring_view text);

// Returns the number in decimal digits, with "-" in front of a negative number.
std::wstring decimal(std::int64_t number);

// Tells whether two texts have the same length and are equal except for case. Only ASCII and Latin-1 letters have case
// here.
bool equalIgnoringCase(const std::wstring& first, const std::wstring& second);

} // namespace OrvaUtils
