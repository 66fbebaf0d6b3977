// The wide C run-time functions of crt.h that need no platform calls. Both platforms use them.
#include <crt.h>

#include <cstdint>

int _wcsicmp(const wchar_t* first, const wchar_t* second) noexcept {
    const auto lower = [](wchar_t character) {
        const auto code = static_cast<std::uint32_t>(character);
        const bool upper = (code >= 'A' && code <= 'Z') || (code >= 0xC0 && code <= 0xDE && code != 0xD7);
        return upper ? code + 32 : code;
    };
    while (*first && (*first == *second || lower(*first) == lower(*second))) {
        ++first;
        ++second;
    }
    const auto left = lower(*first);
    const auto right = lower(*second);
    return left < right ? -1 : left > right;
}

long _wtol(const wchar_t* text) noexcept {
    while (*text == L' ' || *text == L'\t')
        ++text;
    const bool negative = *text == L'-';
    if (*text == L'-' || *text == L'+')
        ++text;
    std::uint32_t value = 0; // long has 32 bits on a panel and wraps
    for (; *text >= L'0' && *text <= L'9'; ++text)
        value = value * 10 + static_cast<std::uint32_t>(*text - L'0');
    return static_cast<std::int32_t>(negative ? 0 - value : value);
}
