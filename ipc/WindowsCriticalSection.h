#pragma once

#include "ipc/ICriticalSection.h"

#include <windows.h>

#include <atomic>

namespace indev {

// Knows its owner: a leave by another thread ends here. The platform would let later enters wait for ever.
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
    std::atomic<DWORD> owner = 0; // thread id; 0: nobody
    unsigned depth = 0; // how often the owner has entered; the owner's alone
};

} // namespace indev
