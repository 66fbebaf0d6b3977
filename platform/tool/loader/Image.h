// The panel executable in memory.
#pragma once

#include <cstdint>
#include <string>

namespace loader {

struct Image {
    std::uint32_t entry = 0; // address
};

// Maps the file at its base, copies its sections and binds its imports to the simulated panel's functions of those
// names: of its first import block those that pass the gate, of its second the C run time's own. Throws
// std::runtime_error if anything in the file does not fit, also with the names of the functions that the panel lacks.
Image load(const std::string& hostPath);

// The panel's function of this name, null if it has none. `runTime`: the C run time's.
void* functionNamed(const std::string& name, bool runTime);

} // namespace loader
