#pragma once

#include "modules/MonitorThread.h"

// Keeps the eMMC's write statistics ("EMMC.xml"), on a thread of its own: at its start, and then every five minutes.
// The time since the panel has booted counts as time of the session. Its failures are EMMCExceptions.
//
// The thread is the only one that uses the file once it runs; between two updates nothing is kept in memory.
class EMMCMonitor : public MonitorThread {
public:
    // Begins a session: count and duration of the last one become 0 in the file. Then throws "Cannot create event" if
    // the platform gives it none.
    EMMCMonitor();
    ~EMMCMonitor() noexcept(false) {
        stopAtEnd();
    }

    // False when it was started before, also when it was stopped since. The first update may still be under way when
    // this returns. Throws "Cannot create thread".
    bool start();

private:
    DWORD watch();
};
