#pragma once

#include "ipc/ICriticalSection.h"

#include <windows.h>

namespace indev {

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
};

} // namespace indev
