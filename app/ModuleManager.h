#pragma once

#include "modules/IModule.h"

#include <vector>

class IPCDispatcher;
class USBDeviceMonitor;

// The resident modules, from their creation to their end. For the main thread only.
class ModuleManager {
public:
    // Creates the screen saver, the buzzer and the configuration applier, in this order. What a module's creation
    // throws comes out; the modules before it are then left as they are, for the end of the process.
    ModuleManager(IPCDispatcher& dispatcher, USBDeviceMonitor& usbMonitor);
    ModuleManager(const ModuleManager&) = delete;
    ModuleManager& operator=(const ModuleManager&) = delete;
    // Deletes every module, deliberately in the order of their creation; then throws what failed first.
    ~ModuleManager() noexcept(false);

private:
    std::vector<IModule*> modules; // owned
};
