// Gives the callbacks of the panel executable the stack of a real panel: aligned to 4 bytes only.
#pragma once

namespace loader {

// Returns an entry that misaligns the stack and then calls the function. The same function always gets the same entry.
// There are 64 entries; the process ends if they are used up. Any thread.
void* entryOnPlatformStack(void* function) noexcept;

// Does the same with the function's own type. A null pointer stays null.
template<class Function>
Function* onPlatformStack(Function* function) noexcept {
    return function ? reinterpret_cast<Function*>(entryOnPlatformStack(reinterpret_cast<void*>(function))) : nullptr;
}

} // namespace loader
