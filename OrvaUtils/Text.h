// Wide text: the only conversions of the program, decimal numbers, comparison.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace OrvaUtils {

// UTF-8 to wide text and back. What is not valid on one side becomes U+FFFD on the other, so neither fails: broken
// sequences in UTF-8, unpaired surrogates and values past U+10FFFF in wide text.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view text);

// Each byte becomes one character of the same value.
std::wstring widen(std::string_view bytes);

std::wstring decimal(std::int64_t number);

// Equal length and the same characters but for their case (of ASCII and Latin-1 letters).
bool equalIgnoringCase(const std::wstring& first, const std::wstring& second);

} // namespace OrvaUtils
