#include "ipc/WindowsCriticalSection.h"

namespace indev {

WindowsCriticalSection::WindowsCriticalSection() {
    InitializeCriticalSection(&section);
}

void WindowsCriticalSection::enter() {
    EnterCriticalSection(&section);
    owner = GetCurrentThreadId();
    ++depth;
}

void WindowsCriticalSection::leave() {
    if (owner != GetCurrentThreadId()) {
        return;
    }
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
