// The platform's calls into the program begin with a stack that is aligned to 4 bytes and no more, as on a panel.
#pragma once

namespace loader {

// What to call instead of this function of the program: up to 64 of them, each given the same answer for good. Throws
// nothing; one too many ends the process.
void* entryOnPlatformStack(void* function) noexcept;

template<class Function>
Function* onPlatformStack(Function* function) noexcept {
    return function ? reinterpret_cast<Function*>(entryOnPlatformStack(reinterpret_cast<void*>(function))) : nullptr;
}

} // namespace loader
