// Wide text in memory with 16-bit characters. The library's own functions expect 32 bits.
#include <cstddef>
#include <cstring>
#include <cwchar>

extern "C" {

std::size_t wcslen(const wchar_t* text) {
    const wchar_t* behind = text;
    while (*behind++) {
    }
    return static_cast<std::size_t>(behind - text) - 1;
}

wchar_t* wmemcpy(wchar_t* target, const wchar_t* source, std::size_t count) {
    return static_cast<wchar_t*>(std::memcpy(target, source, count * sizeof(wchar_t)));
}

wchar_t* wmemmove(wchar_t* target, const wchar_t* source, std::size_t count) {
    return static_cast<wchar_t*>(std::memmove(target, source, count * sizeof(wchar_t)));
}

wchar_t* wmemset(wchar_t* target, wchar_t character, std::size_t count) {
    for (std::size_t index = 0; index < count; ++index)
        target[index] = character;
    return target;
}

int wmemcmp(const wchar_t* first, const wchar_t* second, std::size_t count) {
    for (; count > 0; --count, ++first, ++second)
        if (*first != *second)
            return *first < *second ? -1 : 1;
    return 0;
}

wchar_t* wmemchr(const wchar_t* text, wchar_t character, std::size_t count) {
    for (; count > 0; --count, ++text)
        if (*text == character)
            return const_cast<wchar_t*>(text);
    return nullptr;
}
}
