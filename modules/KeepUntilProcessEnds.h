#pragma once

// Records an object that is deliberately never deleted, because a thread still uses it or its handles must stay open. A
// leak checker then finds the object reachable. Null does nothing. Any thread may call. If memory is short, the object
// simply stays without a record.
void keepUntilProcessEnds(const void* object) noexcept;
