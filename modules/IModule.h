#pragma once

// A resident module.
//
// Life: the module manager creates it on the main thread before the message loop runs; the constructor (or a factory)
// starts the module's work: it registers with the dispatcher or a monitor and starts its threads. The manager deletes
// it through this interface, on the main thread after the loop has ended; the destructor stops the work, and throws
// what failed of that unless an exception is in flight. In between only those call it with whom it registered: the
// dispatcher on the main thread, a monitor on the monitor's thread.
class IModule {
public:
    virtual ~IModule() noexcept(false) = default;
};
