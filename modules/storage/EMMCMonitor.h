#pragma once

// Keeps the eMMC's write statistics ("EMMC.xml"), on a thread of its own: at its start, and then every five minutes.
// The time since the panel has booted counts as time of the session.
//
// Its owner calls everything here on one thread. The thread is the only one that uses the file once it runs; between
// two updates nothing is kept in memory.
class EMMCMonitor {
public:
    // Begins a session: count and duration of the last one become 0 in the file. Then throws EMMCException "Cannot
    // create event" if the platform gives it none.
    EMMCMonitor();
    EMMCMonitor(const EMMCMonitor&) = delete;
    EMMCMonitor& operator=(const EMMCMonitor&) = delete;
    // Stops, and throws as `stop` does, unless an exception is in flight. What a thread that does not end still uses
    // stays behind, until the process ends.
    ~EMMCMonitor() noexcept(false);

    // False when it was started before. Returns when the thread runs; the first update may still be under way. Throws
    // EMMCException "Cannot create thread".
    bool start();
    // Waits for the thread, at most 20000 ms; throws EMMCException "Failed to terminate monitor thread" if that is not
    // enough, and can be called again.
    void stop();

private:
    class Worker;

    Worker* worker; // owned
};
