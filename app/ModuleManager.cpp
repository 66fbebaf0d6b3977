#include "app/ModuleManager.h"

#include "OrvaUtils/Teardown.h"
#include "modules/KeepUntilProcessEnds.h"
#include "modules/buzzer/BuzzerModule.h"
#include "modules/screensaver/ScreenSaverModule.h"
#include "modules/usbconfig/ConfigurationApplier.h"

#include <utility>

ModuleManager::ModuleManager(IPCDispatcher& dispatcher, USBDeviceMonitor& usbMonitor) {
    modules.reserve(3);
    try {
        modules.push_back(ScreenSaverModule::create(dispatcher));
        modules.push_back(BuzzerModule::create(dispatcher));
        modules.push_back(ConfigurationApplier::create(usbMonitor));
    } catch (...) {
        for (const IModule* module : modules) {
            // The modules are deliberately not deleted: their threads continue until the process ends.
            keepUntilProcessEnds(module);
        }
        throw;
    }
}

ModuleManager::~ModuleManager() noexcept(false) {
    OrvaUtils::Teardown steps;
    for (IModule*& module : modules) {
        // The pointer is cleared before the deletion, so that no module is deleted twice.
        steps.run([&] { delete std::exchange(module, nullptr); });
    }
    steps.finish();
}
