#include "modules/storage/EMMCMonitor.h"

#include "OrvaUtils/Teardown.h"
#include "modules/MonitorThread.h"
#include "modules/storage/EMMCException.h"
#include "modules/storage/EMMCStatistics.h"
#include "modules/storage/WriteCounter.h"

#include <atomic>
#include <memory>
#include <vector>

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

// The thread, and all that it uses.
class EMMCMonitor::Worker final : MonitorThread::Loop {
public:
    static Worker* create() {
        resetSession(); // deliberate: whatever becomes of the monitor then
        auto worker = std::make_unique<Worker>();
        if (!worker->thread.isUsable()) {
            throw EMMCException(L"Cannot create event");
        }
        return worker.release();
    }

    Worker() : thread(*this) {}

    bool start() {
        if (running) {
            return false;
        }
        if (!thread.start()) {
            throw EMMCException(L"Cannot create thread");
        }
        return true;
    }

    void stop() {
        if (thread.isOpen() && !thread.stop()) {
            throw EMMCException(L"Failed to terminate monitor thread");
        }
    }

private:
    DWORD run() override {
        if (running) {
            return 0;
        }
        running = true;
        thread.ready();
        update(GetTickCount()); // deliberate: since boot, also when the helper was started before
        while (waitForStop() == WAIT_TIMEOUT) {
            update(INTERVAL); // deliberate: however long it really was
        }
        return 0;
    }

    DWORD waitForStop() const {
        const DWORD woken = WaitForSingleObject(thread.stopEvent(), INTERVAL);
        // Refused once is no end.
        return woken == WAIT_FAILED ? WaitForSingleObject(thread.stopEvent(), INTERVAL) : woken;
    }

    std::atomic<bool> running = false; // set by the thread; deliberate: never cleared
    MonitorThread thread;
};

EMMCMonitor::EMMCMonitor() : worker(Worker::create()) {}

EMMCMonitor::~EMMCMonitor() noexcept(false) {
    // Never destroyed, so that what a thread that goes on uses is not taken for a leak.
    static auto* const stuck = new std::vector<Worker*>;
    stuck->push_back(worker);
    OrvaUtils::Teardown steps;
    steps.run([this] {
        worker->stop();
        stuck->pop_back();
        delete worker;
    });
    steps.finish();
}

bool EMMCMonitor::start() {
    return worker->start();
}

void EMMCMonitor::stop() {
    worker->stop();
}
