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
    // Deliberate: an unreadable counter, which is 0, takes the session's writes off, and the next reading adds them.
    statistics.totalWriteCount = statistics.totalWriteCount - statistics.sessionWriteCount + count;
    statistics.sessionDuration += elapsed / 1000;
    statistics.totalDuration += elapsed / 1000;
    statistics.sessionWriteCount = count;
    EMMCStatistics::save(statistics);
}

} // namespace

EMMCMonitor::EMMCMonitor()
    : MonitorThread([](MonitorThread& self) { return static_cast<EMMCMonitor&>(self).watch(); },
                    [](const wchar_t* message) { throw EMMCException(message); }) {
    resetSession(); // deliberate: also if the monitor then cannot be made
    createEvents();
}

bool EMMCMonitor::start() {
    if (!MonitorThread::start()) {
        return false;
    }
    if (!hasThread()) {
        throw EMMCException(L"Cannot create thread");
    }
    return true;
}

DWORD EMMCMonitor::watch() {
    running = true; // deliberate: never cleared
    tellDecision();
    update(GetTickCount()); // deliberate: since boot, also when the helper was started before
    while (waitTwiceIfRefused([this] { return WaitForSingleObject(stopEvent, INTERVAL); }) == WAIT_TIMEOUT) {
        update(INTERVAL); // deliberate: however long it really was
    }
    return 0;
}
