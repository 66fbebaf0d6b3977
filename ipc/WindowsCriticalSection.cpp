#include "ipc/WindowsCriticalSection.h"

namespace indev {

WindowsCriticalSection::WindowsCriticalSection() {
    InitializeCriticalSection(&section);
}

void WindowsCriticalSection::enter() {
    EnterCriticalSection(&section);
}

void WindowsCriticalSection::leave() {
    LeaveCriticalSection(&section);
}

WindowsCriticalSection::~WindowsCriticalSection() {
    DeleteCriticalSection(&section);
}

std::unique_ptr<ICriticalSection> createCriticalSection() {
    return std::make_unique<WindowsCriticalSection>();
}

} // namespace indev
