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

// Ends the monitor behind the modules and before the dispatcher, also when an exception is in flight.
struct UsbMonitorOwner {
    UsbMonitorOwner() : monitor(new USBDeviceMonitor) {} // the compiler leaks what throws in a member's own initialiser
    ~UsbMonitorOwner() noexcept(false) {
        stopAndDelete(monitor);
    }
    USBDeviceMonitor* const monitor;
};

void runModules() {
    IPCDispatcher dispatcher;
    const UsbMonitorOwner usb;
    const ModuleManager modules(dispatcher, *usb.monitor);
    usb.monitor->start();
    dispatcher.run();
    Logger::instance().writeParts(LogLevel::Info, {L"Module manager terminated"});
    exitCode = 0;
}

} // namespace

void RunModuleManager() {
    EMMCMonitor* emmcMonitor = nullptr;
    try {
        Logger::instance().writeParts(LogLevel::Info, {L"Module manager initialization"});
        // Deliberate: throws without a version, which ends the helper.
        if (platformMinorVersion() >= FIRST_MINOR_VERSION_WITH_EMMC) {
            emmcMonitor = new EMMCMonitor;
            emmcMonitor->start();
        }
        runModules();
        if (emmcMonitor != nullptr) {
            stopAndDelete(std::exchange(emmcMonitor, nullptr));
        }
    } catch (...) {
        reportFailure();
        keepUntilProcessEnds(emmcMonitor); // deliberate: behind a failure it goes on, neither stopped nor deleted
    }
}
