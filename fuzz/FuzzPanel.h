// What the fuzz targets share: a simulated panel for the process, and a file on it with the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

// Writes the file with the folders above it, past the simulated API. The first call makes the panel.
void putFile(std::string_view panelPath, const std::uint8_t* data, std::size_t size);
std::string readFile(std::string_view panelPath);

// Ends the process, as a finding, unless the condition holds.
void require(bool condition, const char* text);

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
