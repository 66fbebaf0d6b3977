// Text inside the simulated panel is UTF-8; wide text exists at the API's edge alone, with 16 or 32 bits a character.
// Case-blind means: the letters of ASCII and Latin-1 (U+00C0 to U+00DE) without their case.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace panel {

std::size_t wideLength(const wchar_t* text);
std::string toUtf8(const wchar_t* text); // null: empty; what is no character becomes U+FFFD
std::string toUtf8(const wchar_t* text, std::size_t length);

// Writes at most `capacity` characters, the terminating zero included; answers how many without it. Text that is too
// long is cut.
std::size_t toWide(std::string_view text, wchar_t* buffer, std::size_t capacity);

std::size_t characterCount(std::string_view text); // of valid UTF-8

// A number in decimal digits and nothing else; false if the text is none, or has more than 32 bits.
bool numberIn(std::string_view text, std::uint32_t& number);

std::string fold(std::string_view text); // for case-blind comparison
inline bool equalCaseBlind(std::string_view first, std::string_view second) {
    return first.size() == second.size() && fold(first) == fold(second);
}

// The text after the last backslash.
inline std::string_view fileName(std::string_view path) {
    const auto separator = path.rfind('\\');
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

// Into a fixed field, terminated; text that is too long is cut.
template<std::size_t N>
void copyText(char (&field)[N], std::string_view text) {
    std::size_t length = std::min(text.size(), N - 1);
    while (length < text.size() && length > 0 && (text[length] & 0xC0) == 0x80) // not in the middle of a character
        --length;
    std::memcpy(field, text.data(), length);
    field[length] = 0;
}

} // namespace panel
