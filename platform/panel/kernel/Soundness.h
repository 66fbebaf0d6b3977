// Checks whether the tables of a kernel file are safe to use, in case somebody has overwritten the file.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

// Returns whether all slots lie within their tables, lists end, texts are terminated and enumerators are valid. A count
// may be out of date if a process was killed in the middle of a change; this is not damage. Needs the kernel's lock.
bool isSound(const Image& image);

} // namespace panel
