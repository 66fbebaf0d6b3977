// Converts bytes to and from hexadecimal text: "02 04".
#pragma once

#include <string>
#include <string_view>

namespace panel {

// Formats bytes in one line, separated by blanks.
std::string hexLine(std::string_view bytes);
// Formats bytes, sixteen per line. Each line ends with a line end.
std::string formatHex(std::string_view bytes);
// Reads bytes. Blanks and line ends may separate them. Throws std::runtime_error with a text for people.
std::string parseHex(std::string_view text);

} // namespace panel
