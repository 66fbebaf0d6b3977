#pragma once

#include "OrvaUtils/Teardown.h"
#include "modules/KeepUntilProcessEnds.h"

#include <windows.h>

#include <atomic>

// The base class of all monitors: it starts and stops the monitor's worker thread and knows whether the thread runs. A
// derived class supplies two functions: the loop that runs on the thread, and the function that throws the monitor's
// exception.
//
// Threads: one owner thread calls all public operations. The loop runs on the worker thread.
//
// Lifetime: if the thread uses only the monitor, the owner creates the monitor with `new` and destroys it with
// `stopAndDelete`, which keeps the monitor in memory if the thread does not end. If the monitor is a member of another
// object, or the thread uses other objects too, the owner calls `stop` itself. The owner deletes these objects and the
// monitor only if `hasEnded` then returns true. If nobody has called `stop`, the destructor of the monitor calls
// `stop` and may throw the exception of `stop`. The monitor is destroyed even if the thread still runs, so do not rely
// on the destructor.
class MonitorThread {
public:
    MonitorThread(const MonitorThread&) = delete;
    MonitorThread& operator=(const MonitorThread&) = delete;

    // Starts the thread. Returns false if the monitor is running already, otherwise true.
    //
    // Waits until the new thread has either entered its loop or ended, at most 20000 ms. If the wait function fails
    // twice, `start` returns at once. If CreateThread fails, `start` still returns true, and `hasEnded` then returns
    // true, too.
    //
    // A thread of an earlier `start` may still exist, if it has neither entered its loop nor ended. In this case
    // `start` closes the handle of the earlier thread, and `hasEnded` refers only to the new thread.
    bool start();
    // Stops the thread: sets the stop event and waits for the thread to end, at most 20000 ms. Does nothing if the
    // monitor is not running. Throws the monitor's exception "Failed to terminate monitor thread" after a time-out, or
    // if the wait function fails twice. After the exception `stop` may be called again.
    void stop();
    // Returns true if no thread uses the monitor: no thread was created, or the thread has ended. The monitor can then
    // be deleted.
    bool hasEnded() const;

protected:
    // The loop of the monitor. It runs on the thread, and its result is the thread's exit code. If the loop cannot do
    // its work, it returns at once. Otherwise it sets `running`, calls `tellDecision` and continues until the stop
    // event is set.
    using Loop = DWORD (*)(MonitorThread& monitor);
    // Throws the monitor's exception with this message.
    using Failure = void (*)(const wchar_t* message);
    // Says whether the monitor closes the handles of its thread and events.
    enum class Handles { Close, LeaveOpen };

    // Stores its arguments and creates nothing.
    MonitorThread(Loop loopToRun, Failure failureToThrow, Handles ofThreadAndEvents = Handles::Close);
    ~MonitorThread();

    // Creates the two events. The constructor of the derived class calls this once. Throws the monitor's exception
    // "Cannot create event".
    void createEvents();
    // Wakes `start`: the thread has entered its loop.
    void tellDecision();
    // Returns true if the object holds a thread handle: the last `start` created a thread, and no `stop` has waited for
    // its end with success.
    bool hasThread() const;
    // Calls `stop` if the object holds a thread handle. The destructor of the derived class calls this first, while the
    // data that the thread uses still exist. Throws the exception of `stop`, unless an exception is in flight.
    void stopAtEnd();

    // Calls a wait function, and calls it once more if the first wait fails.
    template<typename Wait>
    static DWORD waitTwiceIfRefused(Wait wait) {
        const DWORD woken = wait();
        return woken == WAIT_FAILED ? wait() : woken;
    }

    // The loop sets this flag. If the loop does not clear the flag at its end, the monitor can be started only once.
    std::atomic<bool> running = false;
    // INVALID_HANDLE_VALUE: no thread was created yet, or `stop` has waited for its end. Null: CreateThread failed.
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

// Stops a monitor and deletes it. If the thread does not end, the monitor is not deleted and stays in memory until the
// process ends. If `stop` has thrown an exception, rethrows it at the end, unless another exception is in flight.
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
