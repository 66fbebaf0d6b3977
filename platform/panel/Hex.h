// Bytes as people write them: "02 04".
#pragma once

#include <string>
#include <string_view>

namespace panel {

std::string formatHex(std::string_view bytes); // sixteen in a line, each line ended
// Between the bytes there may be blanks and line ends. Throws std::runtime_error with a text for people.
std::string parseHex(std::string_view text);

} // namespace panel
