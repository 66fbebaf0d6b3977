#include "app/RunModuleManager.h"

#include "app/ExitCode.h"
#include "app/FailureReport.h"
#include "app/ModuleManager.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcher.h"

void RunModuleManager() {
    Logger& log = Logger::instance();
    try {
        log.writeParts(LogLevel::Info, {L"Module manager initialization"});
        IPCDispatcher dispatcher;
        const ModuleManager modules(dispatcher);
        dispatcher.run();
        log.writeParts(LogLevel::Info, {L"Module manager terminated"});
        exitCode = 0;
    } catch (...) {
        reportFailure();
    }
}
