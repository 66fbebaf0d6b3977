#pragma once

#include "OrvaUtils/Teardown.h"
#include "modules/KeepUntilProcessEnds.h"

#include <windows.h>

#include <atomic>

// The worker thread of a monitor: it starts and stops the thread and knows whether it runs. It is the base class of all
// monitors; a derived class supplies the loop that runs on the thread and the exception that reports failures.
//
// Threads: one owner thread calls all public operations. The loop runs on the worker thread.
//
// Lifetime: the owner creates a monitor with `new` and ends it with `stopAndDelete`. An owner that has other objects
// which depend on the monitor calls `stop` and then asks `hasEnded`. The destructor of a monitor also stops the thread
// and may throw the exception of `stop`. A monitor must not be deleted while its thread runs.
class MonitorThread {
public:
    MonitorThread(const MonitorThread&) = delete;
    MonitorThread& operator=(const MonitorThread&) = delete;

    // Starts the thread. Returns false if the monitor is running already, otherwise true.
    //
    // Waits until the thread has decided: it runs its loop, or it gives up and ends. The wait lasts 20000 ms at most;
    // if the wait fails twice, `start` returns at once. If CreateThread fails, the result is true all the same, and
    // `hasEnded` is true. If an undecided thread of an earlier start exists, its handle is closed and `hasEnded` tells
    // about the new thread.
    bool start();
    // Stops the thread: sets the stop event and waits for the thread to end, 20000 ms at most. Does nothing unless the
    // monitor is running. Throws the monitor's exception "Failed to terminate monitor thread" after a time-out, or if
    // the wait fails twice. `stop` may then be called again.
    void stop();
    // Tells whether no thread uses the monitor, so that it can be deleted: there never was a thread, or it has ended.
    bool hasEnded() const;

protected:
    // The loop of the monitor, which runs on the thread; its result is the thread's exit code. A loop that gives up
    // returns at once. A loop that runs sets `running`, calls `tellDecision` and continues until the stop event is set.
    using Loop = DWORD (*)(MonitorThread& monitor);
    // Throws the monitor's exception with this message.
    using Failure = void (*)(const wchar_t* message);
    // Decides whether the handles of the thread and the events are closed.
    enum class Handles { Close, LeaveOpen };

    // Stores its arguments and creates nothing.
    MonitorThread(Loop loopToRun, Failure failureToThrow, Handles ofThreadAndEvents = Handles::Close);
    ~MonitorThread();

    // Creates the events. The constructor of the monitor calls it once. Throws the monitor's exception "Cannot create
    // event".
    void createEvents();
    // Tells `start` that the loop runs.
    void tellDecision();
    // Tells whether there is a thread handle: the last `start` created a thread, and no `stop` has seen its end.
    bool hasThread() const;
    // Stops the thread unless that was done. The destructor of the monitor calls it first, while all data of the thread
    // exist. Throws the exception of `stop`, unless an exception is in flight.
    void stopAtEnd();

    // Calls a wait function, and calls it once more if the first wait fails.
    template<typename Wait>
    static DWORD waitTwiceIfRefused(Wait wait) {
        const DWORD woken = wait();
        return woken == WAIT_FAILED ? wait() : woken;
    }

    // The loop sets this. A loop that does not clear it at its end lets the monitor start only once.
    std::atomic<bool> running = false;
    // INVALID_HANDLE_VALUE means that there is no thread or that its end was seen. Null means that CreateThread failed.
    HANDLE threadHandle = INVALID_HANDLE_VALUE;
    HANDLE stopEvent = nullptr; // auto-reset

private:
    static DWORD WINAPI entry(LPVOID self);
    static DWORD body(LPVOID self);
    void close(HANDLE handle) const;

    HANDLE decisionEvent = nullptr; // auto-reset
    Loop loop;
    Failure fail;
    Handles handles;
};

// Stops a monitor and deletes it. If the thread does not end, the monitor stays in memory until the process ends. Then
// throws the exception of `stop`, unless an exception is in flight.
template<class Monitor>
void stopAndDelete(Monitor* monitor) {
    OrvaUtils::Teardown steps;
    steps.run([=] { monitor->stop(); });
    if (monitor->hasEnded()) {
        delete monitor;
    } else {
        keepUntilProcessEnds(monitor);
    }
    steps.finish();
}
