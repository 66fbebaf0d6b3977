// The wide C run-time functions that Windows CE has and standard C has not. On a panel they come from the C run time of
// platform/ce; with another CE toolchain this file is replaced by one that includes <stdlib.h>. They are no platform
// calls: the simulated panel neither counts nor traces them (what _wfopen's streams do with files, it does).
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

extern "C" {

// A stream over CreateFileW, ReadFile and WriteFile, shared for reading and writing, without any translation of line
// ends. Modes: "r", "w", "a", each with "b" and "+" or without. Null on failure.
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) noexcept;

// Below, at or above 0; letters of ASCII and Latin-1 are compared without their case.
int _wcsicmp(const wchar_t* first, const wchar_t* second) noexcept;

// Blanks, a sign, decimal digits; 0 if there are none.
long _wtol(const wchar_t* text) noexcept;

// At most count characters, no terminating zero when they are all used. The length, or -1 if the text was cut.
// Conversions: d i u x X (flags "-0+ #", width, precision, h, l or ll), s and c (width; s also a precision), %%. "%s"
// is wide text, as everywhere in wide functions of this platform, and "%hs" bytes. Any other conversion ("%p", "%f",
// "%*d") and all that follows it stand in the text as they are.
int _vsnwprintf(wchar_t* buffer, std::size_t count, const wchar_t* format, std::va_list arguments) noexcept;
}
