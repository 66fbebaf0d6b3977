#pragma once

#include <cstddef>
#include <cstdint>

// KB that only this host process has: its heap and stacks. An emulator has memory of its own: there it is what lies in
// the 4 GB that begin with the emulated loader.
std::size_t ownMemory(std::int32_t hostPid);
