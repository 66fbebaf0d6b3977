#pragma once

#include <cstdint>

// Writes a number in decimal, with zeros before it up to so many digits (at most 10), and returns where it ends.
char* putDecimal(char* at, std::uint32_t number, unsigned digits = 1);
