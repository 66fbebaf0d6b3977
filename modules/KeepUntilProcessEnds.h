#pragma once

// Records an object that is deliberately never deleted, because a thread still uses it or its handles must stay open. A
// leak checker then finds the object reachable. Does nothing for null. Any thread may call this. If memory is short,
// the object is not recorded, but stays in memory all the same.
void keepUntilProcessEnds(const void* object) noexcept;
