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

constexpr unsigned HAND_OVER_PAUSE = 1000; // milliseconds, for this instance to be gone

void handOver(HANDLE& mutexHandle) {
    Logger::instance().writeParts(LogLevel::Info, {L"Restart from right path needed"});
    HelperSettings::instance().save();
    // Deliberate: the lock is released but not closed; it goes with this process.
    if (mutexHandle != nullptr) {
        ReleaseMutex(mutexHandle);
    }
    mutexHandle = nullptr;
    OrvaUtils::Concurrency::getSystem().sleep(HAND_OVER_PAUSE);
    startInstalledHelper();
}

} // namespace

bool InitializeHelper(HANDLE& mutexHandle, const std::exception_ptr& earlierFailure) {
    try {
        configureLog();
        Logger::instance().writeParts(LogLevel::Info, {L"Init of Helper"});
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
