#include "app/RunModuleManager.h"

#include "app/ExitCode.h"
#include "app/FailureReport.h"
#include "app/ModuleManager.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcher.h"
#include "modules/usbconfig/USBDeviceMonitor.h"

void RunModuleManager() {
    Logger& log = Logger::instance();
    try {
        log.writeParts(LogLevel::Info, {L"Module manager initialization"});
        IPCDispatcher dispatcher;
        USBDeviceMonitor usbMonitor;
        const ModuleManager modules(dispatcher, usbMonitor);
        usbMonitor.start();
        dispatcher.run();
        log.writeParts(LogLevel::Info, {L"Module manager terminated"});
        exitCode = 0;
    } catch (...) {
        reportFailure();
    }
}
