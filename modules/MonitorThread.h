#pragma once

#include "OrvaUtils/Teardown.h"
#include "modules/KeepUntilProcessEnds.h"

#include <windows.h>

#include <atomic>

// What the helper's monitors have in common: a worker thread, how it is started and stopped, and when it counts as
// running. A monitor derives from this class. It says what its loop does, and what its failures are called.
//
// The owner calls everything here on one thread. It makes the monitor with `new` and ends it with `stopAndDelete`, or,
// where others than the thread depend on it, by `stop` and a look at `hasEnded`. The destructor of a monitor stops,
// too, and may throw what `stop` throws: a monitor must not be deleted while its thread goes on.
class MonitorThread {
public:
    MonitorThread(const MonitorThread&) = delete;
    MonitorThread& operator=(const MonitorThread&) = delete;

    // False when the monitor is running. Otherwise makes the thread and returns when the thread has decided to run or
    // to give up; at the latest after 20000 ms, and at once when the platform twice refuses to wait. A thread that the
    // platform does not make counts as one that has ended. A thread that is still undecided when this is called again
    // is forgotten: its handle is closed, and `hasEnded` tells of the new one.
    bool start();
    // Does nothing unless the monitor is running. Asks the thread to end and waits for it, at most 20000 ms. Throws the
    // monitor's failure "Failed to terminate monitor thread" when that is not enough, or when the platform twice
    // refuses to wait; it can then be called again.
    void stop();
    // Whether no thread uses the monitor, so that it can be deleted.
    bool hasEnded() const;

protected:
    // Runs on the thread; what it returns is the thread's exit code. Gives up by returning; otherwise sets `running`,
    // calls `tellDecision`, and goes on until the stop event is set.
    using Loop = DWORD (*)(MonitorThread& monitor);
    // Throws the monitor's failure with this message.
    using Failure = void (*)(const wchar_t* message);
    enum class Handles { Close, LeaveOpen };

    MonitorThread(Loop loopToRun, Failure failureToThrow, Handles ofThreadAndEvents = Handles::Close);
    ~MonitorThread();

    // To be called once, by the monitor's constructor. Throws the failure "Cannot create event".
    void createEvents();
    // The loop has decided to run.
    void tellDecision();
    // Whether there is a handle: the last `start` has made a thread, and no `stop` has seen its end.
    bool hasThread() const;
    // For the monitor's destructor, while all that the thread uses is there: `stop`, unless that was done. Throws its
    // failure, unless an exception is in flight.
    void stopAtEnd();

    // Calls the wait function, and once more when the platform refuses the wait.
    template<typename Wait>
    static DWORD waitTwiceIfRefused(Wait wait) {
        const DWORD woken = wait();
        return woken == WAIT_FAILED ? wait() : woken;
    }

    std::atomic<bool> running = false; // set by the loop; where the loop does not clear it, the monitor starts once
    HANDLE threadHandle = INVALID_HANDLE_VALUE; // also when its end was seen; null: it could not be made
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

// Stops a monitor and deletes it. While its thread goes on, the monitor stays until the process ends. Then throws what
// `stop` has thrown, unless an exception is in flight.
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
