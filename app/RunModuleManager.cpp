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

// Platforms before version x.15 get no eMMC monitor.
constexpr std::int32_t FIRST_MINOR_VERSION_WITH_EMMC = 15;

// Stops and deletes the USB monitor after the modules and before the dispatcher, even during stack unwinding.
struct UsbMonitorOwner {
    // With an initialiser at the member itself, the compiler leaks the monitor if its constructor throws.
    UsbMonitorOwner() : monitor(new USBDeviceMonitor) {}
    ~UsbMonitorOwner() noexcept(false) {
        stopAndDelete(monitor);
    }
    USBDeviceMonitor* const monitor;
};

void runModules() {
    // The objects are destroyed in reverse order: modules, USB monitor, dispatcher.
    IPCDispatcher dispatcher;
    const UsbMonitorOwner usb;
    const ModuleManager modules(dispatcher, *usb.monitor);
    // The modules observe the monitor before its thread runs: no device is missed.
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
        // Deliberate: a missing version throws and ends the helper.
        if (platformMinorVersion() >= FIRST_MINOR_VERSION_WITH_EMMC) {
            emmcMonitor = new EMMCMonitor;
            emmcMonitor->start();
        }
        runModules();
        if (emmcMonitor != nullptr) {
            // A time-out throws. The pointer is cleared first, so the handler below does not touch the monitor.
            stopAndDelete(std::exchange(emmcMonitor, nullptr));
        }
    } catch (...) {
        reportFailure();
        // Deliberate: after a failure the eMMC monitor is neither stopped nor deleted, and its thread continues.
        keepUntilProcessEnds(emmcMonitor);
    }
}
