#pragma once

#include "modules/MonitorThread.h"

// The monitor of the eMMC's write statistics: a thread that updates "EMMC.xml" at its start and then every five
// minutes.
//
// The time since the panel's boot counts as time of the session. Once the thread runs, only the thread uses the file.
// Between two updates nothing is kept in memory. Failures throw EMMCException; an update that fails is not reported.
// One owner thread calls all operations.
class EMMCMonitor : public MonitorThread {
public:
    // Begins a session: sets the session's count and duration in the file to 0. Throws "Cannot create event"; the file
    // has changed by then.
    EMMCMonitor();
    ~EMMCMonitor() noexcept(false) {
        stopAtEnd();
    }

    // Starts the thread. Returns false if the monitor was started before, even if it was stopped since. The first
    // update may still be in progress when this returns. Throws "Cannot create thread".
    bool start();

private:
    DWORD watch();
};
