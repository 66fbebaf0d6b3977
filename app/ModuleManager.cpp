#include "app/ModuleManager.h"

#include "OrvaUtils/Teardown.h"
#include "modules/buzzer/BuzzerModule.h"
#include "modules/screensaver/ScreenSaverModule.h"

#include <utility>

ModuleManager::ModuleManager(IPCDispatcher& dispatcher) {
    modules.push_back(ScreenSaverModule::create(dispatcher));
    modules.push_back(BuzzerModule::create(dispatcher));
}

ModuleManager::~ModuleManager() noexcept(false) {
    OrvaUtils::Teardown steps;
    for (IModule*& module : modules) {
        steps.run([&] { delete std::exchange(module, nullptr); });
    }
    steps.finish();
}
