#pragma once

#include <cstdint>

// Writes a number in decimal, with leading zeros if it has fewer than `digits` digits (1 to 10). Returns the end of the
// text.
char* putDecimal(char* at, std::uint32_t number, unsigned digits = 1);
