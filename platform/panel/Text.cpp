#include "platform/panel/Text.h"

#include <utf8.h>

#include <charconv>
#include <iterator>
#include <system_error>

namespace panel {

std::size_t wideLength(const wchar_t* text) {
    std::size_t length = 0;
    while (text && text[length])
        ++length;
    return length;
}

std::string toUtf8(const wchar_t* text) {
    return toUtf8(text, wideLength(text));
}

std::string toUtf8(const wchar_t* text, std::size_t length) {
    std::string result;
    for (std::size_t index = 0; index < length; ++index) {
        auto character = static_cast<std::uint32_t>(text[index]);
        if constexpr (sizeof(wchar_t) == 2) {
            const bool pair = utf8::internal::is_lead_surrogate(character) && index + 1 < length &&
                              utf8::internal::is_trail_surrogate(static_cast<std::uint32_t>(text[index + 1]));
            if (pair)
                character =
                    0x10000 + ((character - 0xD800) << 10) + (static_cast<std::uint32_t>(text[++index]) - 0xDC00);
        }
        if (!utf8::internal::is_code_point_valid(character))
            character = 0xFFFD;
        utf8::unchecked::append(character, std::back_inserter(result));
    }
    return result;
}

std::size_t toWide(std::string_view text, wchar_t* buffer, std::size_t capacity) {
    if (capacity == 0)
        return 0;
    std::string valid;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), 0xFFFDU);
    std::size_t length = 0;
    for (auto at = valid.begin(); at != valid.end();) {
        const std::uint32_t character = utf8::unchecked::next(at);
        const bool pair = sizeof(wchar_t) == 2 && character > 0xFFFF;
        if (length + (pair ? 2 : 1) >= capacity)
            break;
        if (pair) {
            buffer[length++] = static_cast<wchar_t>(0xD7C0 + (character >> 10));
            buffer[length++] = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        } else {
            buffer[length++] = static_cast<wchar_t>(character);
        }
    }
    buffer[length] = 0;
    return length;
}

std::size_t characterCount(std::string_view text) {
    const auto begins = [](char byte) { return (byte & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

bool numberIn(std::string_view text, std::uint32_t& number) {
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && behind == end;
}

std::string fold(std::string_view text) {
    std::string result(text);
    for (std::size_t index = 0; index < result.size(); ++index) {
        char& byte = result[index];
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte + 32);
        else if (byte == '\xC3' && index + 1 < result.size()) { // U+00C0 to U+00FF; U+00D7 is not a letter
            const auto low = static_cast<unsigned char>(result[++index]);
            if (low <= 0x9E && low != 0x97)
                result[index] = static_cast<char>(low + 32);
        }
    }
    return result;
}

} // namespace panel
