#include "app/InitializeHelper.h"

#include "OrvaUtils/Concurrency/ISystem.h"
#include "app/FailureReport.h"
#include "app/HelperSettings.h"
#include "app/Launch.h"
#include "app/LogSetup.h"
#include "app/Paths.h"
#include "app/StartupSequence.h"
#include "app/log/Logger.h"

namespace {

// The pause in milliseconds between the release of the mutex and the start of the installed helper. The name of the
// mutex exists until this process ends: a helper that runs earlier takes itself for a second instance.
constexpr unsigned HAND_OVER_PAUSE = 1000;

void handOver(HANDLE& mutexHandle) {
    Logger::instance().writeParts(LogLevel::Info, {L"Restart from right path needed"});
    // The installed helper reads the registered cleanup directory from the document.
    HelperSettings::instance().save();
    // Deliberate: the mutex is released but not closed. Its handle lives until this process ends.
    if (mutexHandle != nullptr) {
        ReleaseMutex(mutexHandle);
    }
    // The caller must not release the mutex again.
    mutexHandle = nullptr;
    OrvaUtils::Concurrency::getSystem().sleep(HAND_OVER_PAUSE);
    startInstalledHelper();
}

} // namespace

bool InitializeHelper(HANDLE& mutexHandle, const std::exception_ptr& earlierFailure) {
    try {
        configureLog();
        Logger::instance().writeParts(LogLevel::Info, {L"Init of Helper"});
        // The failure is older than the log, so it is only reported here.
        if (earlierFailure != nullptr) {
            std::rethrow_exception(earlierFailure);
        }
        StartupContext context;
        RunStartupSequence(context);
        if (context.restartNeeded) {
            handOver(mutexHandle);
        }
        return !context.restartNeeded;
    } catch (...) {
        reportFailure();
        return false;
    }
}
