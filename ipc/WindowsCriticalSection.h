#pragma once

#include "ipc/ICriticalSection.h"

#include <windows.h>

#include <atomic>

namespace indev {

// A critical section that wraps the platform's CRITICAL_SECTION and stores which thread owns it.
//
// If a thread that is not the owner calls `leave`, this class ignores the call. LeaveCriticalSection would corrupt the
// critical section, and a later `enter` could wait for ever.
class WindowsCriticalSection : public ICriticalSection {
public:
    WindowsCriticalSection();
    WindowsCriticalSection(const WindowsCriticalSection&) = delete;
    WindowsCriticalSection& operator=(const WindowsCriticalSection&) = delete;
    void enter() override;
    void leave() override;
    ~WindowsCriticalSection() override;

private:
    CRITICAL_SECTION section;
    std::atomic<DWORD> owner = 0; // thread id of the owner, 0 without an owner
    unsigned depth = 0; // number of enters of the owner; only the owner uses it
};

} // namespace indev
