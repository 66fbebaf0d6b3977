// Loads a panel executable into memory.
#pragma once

#include <cstdint>
#include <string>

namespace loader {

struct Image {
    std::uint32_t entry = 0; // address of the entry point
};

// Maps the file at its base address, copies its sections and binds its imports by name. The imports of the first block
// are bound to the simulated panel's functions, those of the second block to the C run time's own (functionNamed).
// Throws std::runtime_error if the file is malformed, or if the panel lacks a function; the text then names the
// functions.
Image load(const std::string& hostPath);

// Returns the address of a function, or null if the panel lacks it. With `runTime` it is a function for the C run time,
// which bypasses the gate.
void* functionNamed(const std::string& name, bool runTime);

} // namespace loader
