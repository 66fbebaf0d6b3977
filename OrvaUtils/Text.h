// Wide text: the only conversions of the program but for those of the log, which stands below; decimal numbers,
// comparison.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace OrvaUtils {

// UTF-8 to wide text and back. What is not valid on one side becomes U+FFFD on the other, so neither fails: broken
// sequences in UTF-8, unpaired surrogates and values past U+10FFFF in wide text.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view text);

// Text in the platform's records (registry data, drivers, partitions) has 16 bits a character, little-endian, zeros
// included like any other; an odd last byte is no character. Neither fails, and unpaired surrogates survive both ways.
std::wstring fromText16(const std::uint8_t* bytes, std::size_t size);
std::vector<std::uint8_t> toText16(std::wstring_view text);

// Each byte becomes one character of the same value, and back; what needs more than a byte becomes "?".
std::wstring widen(std::string_view bytes);
std::string narrow(std::wstring_view text);

std::wstring decimal(std::int64_t number);

// Equal length and the same characters but for their case (of ASCII and Latin-1 letters).
bool equalIgnoringCase(const std::wstring& first, const std::wstring& second);

} // namespace OrvaUtils
