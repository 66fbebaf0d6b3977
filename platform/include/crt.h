// The wide C run-time functions that Windows CE provides and standard C lacks.
//
// On a panel the C run time of platform/ce provides them. With another CE toolchain, replace this file by a file that
// includes <stdlib.h>. These functions are not platform calls: the simulated panel neither counts nor traces them. It
// does count and trace the file operations of the streams that _wfopen opens.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

extern "C" {

// Opens a stream over CreateFileW, ReadFile and WriteFile. The file is shared for reading and writing. Line ends are
// not translated. Modes: "r", "w", "a", each optionally with "b" and "+". Returns null on failure.
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept;

// Compares two texts case-insensitively. Returns a value below, at or above 0. Only the letters of ASCII and Latin-1
// lose their case.
int _wcsicmp(const wchar_t* first, const wchar_t* second) noexcept;

// Reads a decimal number: blanks, an optional sign, digits. Returns 0 if the text holds no digits.
long _wtol(const wchar_t* text) noexcept;

// Formats at most `count` characters. Writes no terminating zero if the text needs all of them.
// Returns the length, or -1 if the text was cut.
//
// Conversions: d i u x X (flags "-0+ #", width, precision, h, l or ll), s (width, precision), c (width), %%.
// "%s" takes wide text, as everywhere in this platform's wide functions; "%hs" takes bytes.
// At any other conversion ("%p", "%f", "%*d") formatting stops: the rest of the format is copied unchanged.
int _vsnwprintf(wchar_t* buffer, std::size_t count, const wchar_t* format, std::va_list arguments) noexcept;
}
