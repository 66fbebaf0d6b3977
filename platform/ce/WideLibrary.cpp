// What the C library's formatted input and output would do with wide text ("%ls", wide streams). Nobody asks for it,
// and the ready-made functions, which take a wide character for 32 bits, stay out of the executable.
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

// Input patterns are read with it, whose characters are all ASCII.
int iswspace(std::wint_t character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}
}
