#pragma once

#include "modules/MonitorThread.h"

// The monitor of the eMMC's write statistics: a thread that updates "EMMC.xml" at its start and then every five
// minutes.
//
// The constructor sets the session's values to 0. The first update adds the whole time since the panel's boot to the
// session's duration: a session counts from the boot, not from the constructor. Once the thread runs, only the thread
// uses the file. Each update reads the file, changes the values and writes the file. Failures throw EMMCException; an
// update that fails is not reported. One owner thread calls all operations.
class EMMCMonitor : public MonitorThread {
public:
    // Sets the session's count and duration in the file to 0, then creates the events. Throws "Cannot create event";
    // the file has changed by then.
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
