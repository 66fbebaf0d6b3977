#include "OrvaUtils/Text.h"

#include "app/log/Decimal.h"

#include <crt.h>

#include <algorithm>
#include <iterator>
#include <utf8.h>

namespace OrvaUtils {

namespace {

// The Unicode replacement character.
constexpr std::uint32_t REPLACEMENT = 0xFFFD;

// UTF-16 writes a character above U+FFFF as a pair: a high surrogate, then a low surrogate.
bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Appends a 16-bit unit in little-endian order.
void append16(std::vector<std::uint8_t>& bytes, std::uint32_t unit) {
    bytes.push_back(static_cast<std::uint8_t>(unit));
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
}

} // namespace

std::wstring toWide(std::string_view utf8) {
    const auto* const other = std::find_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0x80) != 0; });
    std::wstring text(utf8.begin(), other); // ASCII, mostly all of it
    if (other == utf8.end()) {
        return text;
    }
    std::string valid;
    // The unchecked conversions below are only safe for valid UTF-8.
    utf8::replace_invalid(other, utf8.end(), std::back_inserter(valid), REPLACEMENT);
    // A wide character has 16 or 32 bits, depending on the platform. Only this file looks at the difference.
    if constexpr (sizeof(wchar_t) == 2) {
        utf8::unchecked::utf8to16(valid.begin(), valid.end(), std::back_inserter(text));
    } else {
        utf8::unchecked::utf8to32(valid.begin(), valid.end(), std::back_inserter(text));
    }
    return text;
}

// The conversion does not use utf8::utf16to8: that function throws for an unpaired surrogate.
std::string toUtf8(std::wstring_view text) {
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto point = static_cast<std::uint32_t>(text[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            if (isHighSurrogate(point) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
                point = 0x10000 + ((point - 0xD800) << 10) + (static_cast<std::uint32_t>(text[++i]) - 0xDC00);
            }
        }
        if (isHighSurrogate(point) || isLowSurrogate(point) || point > 0x10FFFF) {
            point = REPLACEMENT;
        }
        utf8::unchecked::append(point, std::back_inserter(utf8));
    }
    return utf8;
}

std::wstring fromText16(const std::uint8_t* bytes, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        const std::uint32_t unit = bytes[i] | (static_cast<std::uint32_t>(bytes[i + 1]) << 8);
        // A pair of surrogates becomes one wide character. An unpaired surrogate stays as it is.
        if constexpr (sizeof(wchar_t) > 2) {
            if (isLowSurrogate(unit) && !text.empty() && isHighSurrogate(static_cast<std::uint32_t>(text.back()))) {
                const std::uint32_t high = static_cast<std::uint32_t>(text.back()) - 0xD800;
                text.back() = static_cast<wchar_t>(0x10000 + (high << 10) + (unit - 0xDC00));
                continue;
            }
        }
        text += static_cast<wchar_t>(unit);
    }
    return text;
}

std::vector<std::uint8_t> toText16(std::wstring_view text) {
    if constexpr (sizeof(wchar_t) == 2) {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(text.data());
        return {first, first + 2 * text.size()};
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(2 * text.size());
    for (const wchar_t character : text) {
        const auto point = static_cast<std::uint32_t>(character);
        // No pair of surrogates can express this value.
        if (point > 0x10FFFF) {
            append16(bytes, REPLACEMENT);
        } else if (point > 0xFFFF) {
            append16(bytes, 0xD800 + ((point - 0x10000) >> 10));
            append16(bytes, 0xDC00 + ((point - 0x10000) & 0x3FF));
        } else {
            append16(bytes, point);
        }
    }
    return bytes;
}

std::wstring widen(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return text;
}

std::string narrow(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t character : text) {
        const auto code = static_cast<std::uint32_t>(character);
        bytes += code <= 0xFF ? static_cast<char>(code) : '?';
    }
    return bytes;
}

std::wstring decimal(std::int64_t number) {
    if (number < 0 || number > UINT32_MAX) {
        return widen(std::to_string(number));
    }
    char digits[10];
    return std::wstring(digits, putDecimal(digits, static_cast<std::uint32_t>(number)));
}

bool equalIgnoringCase(const std::wstring& first, const std::wstring& second) {
    return first.size() == second.size() && _wcsicmp(first.c_str(), second.c_str()) == 0;
}

} // namespace OrvaUtils
