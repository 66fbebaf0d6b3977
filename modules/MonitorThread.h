#pragma once

#include <windows.h>

// The worker thread of a monitor: how it is started and stopped, and what becomes of an exception.
//
// All operations are for the monitor's owner, on one thread at a time, but `stopEvent` and `ready`, which the worker
// uses. The destructor closes the handles and stops nothing: the monitor's own does. While a thread goes on that could
// not be stopped, this object must stay.
class MonitorThread {
public:
    // What runs on the worker thread.
    class Loop {
    public:
        // Returns at once, or calls `ready` and runs, as a rule until the stop event is set; the thread's exit code. An
        // exception that leaves it is logged at ERROR, with its message or as "Generic exception", and ends the thread.
        virtual DWORD run() = 0;

    protected:
        ~Loop() = default; // never deleted through this interface
    };

    explicit MonitorThread(Loop& loopToRun);
    MonitorThread(const MonitorThread&) = delete;
    MonitorThread& operator=(const MonitorThread&) = delete;
    ~MonitorThread();

    // Whether the platform has given it its events; without them it must not be used.
    bool isUsable() const;
    // Auto-reset.
    HANDLE stopEvent() const;

    // Starts a thread and returns when that is ready or has ended, so that it can be stopped at once; at the latest
    // after 20000 ms, and at once if the platform twice refuses to wait. False: the platform made no thread.
    bool start();
    // To be called once by the worker.
    void ready();
    // Asks the thread to end and waits for it, at most 20000 ms. False, and it can be called again, if it did not end,
    // or if the platform twice refuses to wait. The thread's handle stays open until the next start or the destructor.
    bool stop();
    // Whether a thread was made that `stop` has not seen the end of.
    bool isOpen() const;

private:
    static DWORD WINAPI entry(LPVOID self);
    bool hasThread() const;
    void closeThread();

    Loop& loop;
    HANDLE thread = INVALID_HANDLE_VALUE; // null: it could not be made
    bool isOver = false; // `stop` has seen its end
    HANDLE stopRequested;
    HANDLE isReady; // auto-reset
};
