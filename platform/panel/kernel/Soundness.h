// Whether the tables of a kernel file can be used without harm, whatever somebody wrote over them.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

// Slots lie in their tables, lists end, texts are terminated, numbers have a meaning. What is out of date, as after a
// process that was killed in the middle of a change, is no damage. Wants the lock.
bool isSound(const Image& image);

} // namespace panel
