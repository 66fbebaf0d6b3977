#include "modules/storage/EMMCMonitor.h"

#include "modules/storage/EMMCException.h"
#include "modules/storage/EMMCStatistics.h"
#include "modules/storage/WriteCounter.h"

namespace {

constexpr DWORD INTERVAL = 300000; // ms

void resetSession() {
    EMMCStatistics statistics = EMMCStatistics::load();
    statistics.sessionWriteCount = 0;
    statistics.sessionDuration = 0;
    EMMCStatistics::save(statistics);
}

void update(DWORD elapsed) {
    EMMCStatistics statistics = EMMCStatistics::load();
    const std::uint32_t count = readWriteCounter();
    // Deliberate: a counter that cannot be read is 0. The session's writes then leave the total, and the next reading
    // adds them again.
    statistics.totalWriteCount = statistics.totalWriteCount - statistics.sessionWriteCount + count;
    // The file counts in seconds.
    statistics.sessionDuration += elapsed / 1000;
    statistics.totalDuration += elapsed / 1000;
    statistics.sessionWriteCount = count;
    EMMCStatistics::save(statistics);
}

} // namespace

EMMCMonitor::EMMCMonitor()
    : MonitorThread([](MonitorThread& self) { return static_cast<EMMCMonitor&>(self).watch(); },
                    [](const wchar_t* message) { throw EMMCException(message); }) {
    // Deliberate: the file is changed even if the monitor then cannot be created.
    resetSession();
    createEvents();
}

bool EMMCMonitor::start() {
    if (!MonitorThread::start()) {
        return false;
    }
    // Only this monitor reports that CreateThread failed.
    if (!hasThread()) {
        throw EMMCException(L"Cannot create thread");
    }
    return true;
}

DWORD EMMCMonitor::watch() {
    // Deliberate: `running` is never cleared, so the monitor starts only once.
    running = true;
    tellDecision();
    // Deliberate: the time since boot counts, even if the helper ran before in this boot.
    update(GetTickCount());
    while (waitTwiceIfRefused([this] { return WaitForSingleObject(stopEvent, INTERVAL); }) == WAIT_TIMEOUT) {
        // Deliberate: the interval counts, however long the update and the wait really took.
        update(INTERVAL);
    }
    return 0;
}
