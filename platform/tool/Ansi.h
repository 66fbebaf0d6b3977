// Converts text between ANSI (the code page 1252) and 16 bits per character, little-endian.
#pragma once

#include "platform/panel/Registry.h"

namespace tool {

panel::registry::Bytes widened(const panel::registry::Bytes& ansi);

// Appends the text to `ansi`. Returns false if ANSI lacks a character, or half a character stands at the end.
bool narrow(const panel::registry::Bytes& wide, panel::registry::Bytes& ansi);

} // namespace tool
