#pragma once

// A resident module of the helper: the screen saver, the touch buzzer or the configuration applier.
//
// Life: the module manager creates the module on the main thread, before the message loop runs. The constructor or
// factory of the module starts its work: it registers with the dispatcher or with a monitor, and starts threads. The
// manager deletes the module through this interface, on the main thread, after the loop has ended.
//
// The destructor stops the work of the module. It completes all of its steps; then it throws the first failure, unless
// an exception is in flight.
//
// Threads: between creation and deletion only two callers use the module: the dispatcher on the main thread, and a
// monitor on the monitor's thread.
class IModule {
public:
    virtual ~IModule() noexcept(false) = default;
};
