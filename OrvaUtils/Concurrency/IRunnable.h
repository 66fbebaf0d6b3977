#pragma once

namespace OrvaUtils::Concurrency {

// What a thread runs. Whoever starts it on an IThread owns it and deletes it after the thread has been stopped.
class IRunnable {
public:
    // The body, called once on the new thread. Lets no exception out.
    virtual void run() = 0;
    // Called on the thread that stops the other one, while `run` may be in progress there: makes `run` return soon.
    virtual void stop() = 0;

protected:
    ~IRunnable() = default; // never deleted through this interface
};

} // namespace OrvaUtils::Concurrency
