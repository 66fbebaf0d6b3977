// Formatted text without floating point. The helper and the linked parts of the XML library format and read only
// integers and text; check.py verifies that. The library's full functions would be a quarter of the executable.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

extern "C" {

int vsnprintf(char* text, std::size_t size, const char* format, std::va_list arguments) {
    return vsniprintf(text, size, format, arguments);
}

int snprintf(char* text, std::size_t size, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = vsniprintf(text, size, format, arguments);
    va_end(arguments);
    return length;
}

int vfprintf(std::FILE* stream, const char* format, std::va_list arguments) {
    char* text = nullptr;
    const int length = vasiprintf(&text, format, arguments);
    const bool written = length >= 0 && std::fputs(text, stream) >= 0;
    std::free(text);
    return written ? length : -1;
}

int sscanf(const char* text, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int count = vsiscanf(text, format, arguments);
    va_end(arguments);
    return count;
}
}
