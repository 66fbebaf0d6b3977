#pragma once

#include "modules/IModule.h"

#include <vector>

class IPCDispatcher;
class USBDeviceMonitor;

// The owner of the resident modules: it creates them in its constructor and deletes them in its destructor. Only the
// main thread uses it.
class ModuleManager {
public:
    // Creates the screen saver, the buzzer and the configuration applier, in this order. The dispatcher and the monitor
    // are not owned and must live longer. If the creation of a module throws, the exception passes through, and the
    // modules that were created before are never deleted.
    ModuleManager(IPCDispatcher& dispatcher, USBDeviceMonitor& usbMonitor);
    ModuleManager(const ModuleManager&) = delete;
    ModuleManager& operator=(const ModuleManager&) = delete;
    // Deletes every module, deliberately in the order of creation. Then throws the first exception that a module's
    // destructor threw, unless an exception is in flight.
    ~ModuleManager() noexcept(false);

private:
    std::vector<IModule*> modules; // owned
};
