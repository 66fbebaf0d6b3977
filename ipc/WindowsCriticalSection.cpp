#include "ipc/WindowsCriticalSection.h"

namespace indev {

WindowsCriticalSection::WindowsCriticalSection() {
    InitializeCriticalSection(&section);
}

void WindowsCriticalSection::enter() {
    EnterCriticalSection(&section);
    // Only the owner writes both fields, within the critical section.
    owner = GetCurrentThreadId();
    ++depth;
}

void WindowsCriticalSection::leave() {
    // A thread can find its own id here only if it is the owner, so the look needs no lock.
    if (owner != GetCurrentThreadId()) {
        return;
    }
    // The owner is cleared before the platform lets the next thread in.
    if (--depth == 0) {
        owner = 0;
    }
    LeaveCriticalSection(&section);
}

WindowsCriticalSection::~WindowsCriticalSection() {
    DeleteCriticalSection(&section);
}

std::unique_ptr<ICriticalSection> createCriticalSection() {
    return std::make_unique<WindowsCriticalSection>();
}

} // namespace indev
