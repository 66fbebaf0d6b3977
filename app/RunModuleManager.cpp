#include "app/RunModuleManager.h"

#include "app/ExitCode.h"
#include "app/FailureReport.h"
#include "app/ModuleManager.h"
#include "app/PlatformVersion.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcher.h"
#include "modules/storage/EMMCMonitor.h"
#include "modules/usbconfig/USBDeviceMonitor.h"

#include <utility>

namespace {

constexpr std::int32_t FIRST_MINOR_VERSION_WITH_EMMC = 15;

void runModules() {
    IPCDispatcher dispatcher;
    USBDeviceMonitor usbMonitor;
    const ModuleManager modules(dispatcher, usbMonitor);
    usbMonitor.start();
    dispatcher.run();
    Logger::instance().writeParts(LogLevel::Info, {L"Module manager terminated"});
    exitCode = 0;
}

} // namespace

void RunModuleManager() {
    // Deliberately neither stopped nor deleted behind an exception: it goes on until the process ends. Static, so that
    // it is not taken for a leak.
    static EMMCMonitor* emmcMonitor = nullptr;
    try {
        Logger::instance().writeParts(LogLevel::Info, {L"Module manager initialization"});
        // Deliberate: throws without a version, which ends the helper.
        if (platformMinorVersion() >= FIRST_MINOR_VERSION_WITH_EMMC) {
            emmcMonitor = new EMMCMonitor;
            emmcMonitor->start();
        }
        runModules();
        delete std::exchange(emmcMonitor, nullptr);
    } catch (...) {
        reportFailure();
    }
}
