// Text functions of the simulated panel.
//
// Inside the simulated panel text is UTF-8. Wide text exists only at the API's edge, with 16 or 32 bits per character.
// Case-insensitive comparison ignores the case of the letters of ASCII and Latin-1 (U+00C0 to U+00DE) only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace panel {

// Returns the length in wide characters.
std::size_t wideLength(const wchar_t* text);
// Converts wide text. A null pointer gives "". An invalid sequence becomes U+FFFD.
std::string toUtf8(const wchar_t* text);
std::string toUtf8(const wchar_t* text, std::size_t length);

// Converts to wide text. Writes at most `capacity` characters including the terminating zero; longer text is cut.
// Returns the number of characters without the zero.
std::size_t toWide(std::string_view text, wchar_t* buffer, std::size_t capacity);

// Returns the number of characters in valid UTF-8.
std::size_t characterCount(std::string_view text);

// Reads a number that consists of decimal digits only. Returns false for other texts and for more than 32 bits.
bool numberIn(std::string_view text, std::uint32_t& number);

// Returns the text without case. Two texts are equal case-insensitively if their folded forms are equal.
std::string fold(std::string_view text);
// Compares two texts case-insensitively.
inline bool equalCaseBlind(std::string_view first, std::string_view second) {
    if (first.size() != second.size())
        return false;
    for (std::size_t at = first.size(); at-- > 0;) { // from the end, where similar names differ
        if (first[at] == second[at])
            continue;
        if ((first[at] | second[at]) & 0x80)
            return fold(first) == fold(second);
        if ((first[at] | 0x20) != (second[at] | 0x20) || (first[at] | 0x20) < 'a' || (first[at] | 0x20) > 'z')
            return false;
    }
    return true;
}

// Returns the text after the last backslash.
inline std::string_view fileName(std::string_view path) {
    const auto separator = path.rfind('\\');
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

// Copies a text into a fixed field and terminates it. Longer text is cut between two characters.
template<std::size_t N>
void copyText(char (&field)[N], std::string_view text) {
    std::size_t length = std::min(text.size(), N - 1);
    while (length < text.size() && length > 0 && (text[length] & 0xC0) == 0x80) // inside a character
        --length;
    std::memcpy(field, text.data(), length);
    field[length] = 0;
}

} // namespace panel
