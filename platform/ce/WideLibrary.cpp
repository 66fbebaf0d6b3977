// Replacements of the functions by which the C library's formatted input and output would handle wide text ("%ls", wide
// streams). No code uses them. They keep the library's own versions, for 32-bit characters, out of the executable.
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>

struct _reent;

extern "C" {

std::wint_t _fputwc_r(_reent*, wchar_t, std::FILE*) {
    std::abort();
}

std::size_t _mbrtowc_r(_reent*, wchar_t*, const char*, std::size_t, std::mbstate_t*) {
    std::abort();
}

std::size_t _wcrtomb_r(_reent*, char*, wchar_t, std::mbstate_t*) {
    std::abort();
}

// The C library reads its format strings with this function. Their characters are ASCII.
int iswspace(std::wint_t character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}
}
