#pragma once

// Notes an object that is deliberately never deleted: a thread goes on using it, or its handles must stay open. To a
// leak checker the object then counts as in use. Any thread may call; null does nothing. Never fails: when memory is
// short, the object stays without a note.
void keepUntilProcessEnds(const void* object) noexcept;
