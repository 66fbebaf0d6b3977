#include "platform/panel/Hex.h"

#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace panel {

std::string hexLine(std::string_view bytes) {
    std::string text;
    char number[4];
    for (const char byte : bytes) {
        std::snprintf(number, sizeof number, text.empty() ? "%02x" : " %02x", static_cast<unsigned char>(byte));
        text += number;
    }
    return text;
}

std::string formatHex(std::string_view bytes) {
    constexpr std::size_t inLine = 16;
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += inLine)
        text += hexLine(bytes.substr(at, inLine)) + '\n';
    return text;
}

std::string parseHex(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string bytes;
    bool half = false;
    for (const char character : text) {
        if (std::isspace(static_cast<unsigned char>(character)) && !half)
            continue;
        const auto digit = digits.find(static_cast<char>(std::tolower(static_cast<unsigned char>(character))));
        if (digit == std::string_view::npos)
            throw std::runtime_error("not bytes in hexadecimal: \"" + std::string(text) + "\" (such as \"02 04\")");
        if (half)
            bytes.back() = static_cast<char>(bytes.back() << 4 | static_cast<char>(digit));
        else
            bytes += static_cast<char>(digit);
        half = !half;
    }
    if (half)
        throw std::runtime_error("a byte has two digits: \"" + std::string(text) + '"');
    return bytes;
}

} // namespace panel
