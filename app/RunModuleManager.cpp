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

void serveMessages() {
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
    // Static, and deliberately neither stopped nor deleted behind an exception: it goes on until the process ends.
    static EMMCMonitor* statistics = nullptr;
    try {
        Logger::instance().writeParts(LogLevel::Info, {L"Module manager initialization"});
        if (platformMinorVersion() >= FIRST_MINOR_VERSION_WITH_EMMC) {
            statistics = new EMMCMonitor;
            statistics->start();
        }
        serveMessages();
        delete std::exchange(statistics, nullptr);
    } catch (...) {
        reportFailure();
    }
}
