#pragma once

namespace OrvaUtils::Concurrency {

// The work of a thread: an object whose `run` an IThread executes.
//
// The caller of IThread::start owns the runnable and deletes it after the thread has stopped.
class IRunnable {
public:
    // Does the work. The new thread calls it once. No exception may leave it: an exception would end the process.
    virtual void run() = 0;
    // Makes `run` return soon, for example by setting an event that `run` waits for. The stopping thread calls it while
    // `run` may be in progress on the worker thread.
    virtual void stop() = 0;

protected:
    ~IRunnable() = default; // The destructor is protected: nobody deletes a runnable through this interface.
};

} // namespace OrvaUtils::Concurrency
