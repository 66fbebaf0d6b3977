// Checks whether the tables of a kernel file are safe to use, in case somebody has overwritten the file.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

// Returns whether all slots lie within their tables, lists end, texts are terminated and enumerators are valid. Counts
// that are out of date, as after the death of a process in the middle of a change, are no damage. Needs the kernel's
// lock.
bool isSound(const Image& image);

} // namespace panel
