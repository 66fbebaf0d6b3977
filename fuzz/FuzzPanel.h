// Shared by the fuzz targets: a simulated panel for the process, and a file on it that holds the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

// Writes a file of the panel, with the folders above it, on the host: the simulated API is not used. The first call
// creates the panel.
void putFile(std::string_view panelPath, const std::uint8_t* data, std::size_t size);
std::string readFile(std::string_view panelPath);

// If the condition does not hold, aborts the process, which the fuzzer reports as a finding.
void require(bool condition, const char* text);

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
