#include "modules/MonitorThread.h"

#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"

namespace {

constexpr DWORD LIMIT = 20000; // ms

} // namespace

MonitorThread::MonitorThread(Loop& loopToRun)
    : loop(loopToRun),
      stopRequested(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      decided(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

MonitorThread::~MonitorThread() {
    closeThread();
    for (const HANDLE event : {stopRequested, decided}) {
        if (event != nullptr) {
            CloseHandle(event);
        }
    }
}

bool MonitorThread::isUsable() const {
    return stopRequested != nullptr && decided != nullptr;
}

HANDLE MonitorThread::stopEvent() const {
    return stopRequested;
}

bool MonitorThread::start() {
    closeThread();
    thread = CreateThread(nullptr, 0, entry, this, 0, nullptr);
    if (thread == nullptr) {
        return false;
    }
    // One that ends has decided, too. The limit is for a platform that does not set the event.
    const HANDLE decisions[] = {decided, thread};
    WaitForMultipleObjects(2, decisions, FALSE, LIMIT);
    return true;
}

bool MonitorThread::stop() {
    EventModify(stopRequested, EVENT_SET);
    if (thread == INVALID_HANDLE_VALUE) {
        return true;
    }
    DWORD ended = WaitForSingleObject(thread, LIMIT);
    if (ended == WAIT_FAILED) {
        ended = WaitForSingleObject(thread, LIMIT); // it may still run, and use what is about to go
    }
    if (ended == WAIT_TIMEOUT) {
        return false;
    }
    closeThread();
    return true;
}

void MonitorThread::closeThread() {
    if (thread != nullptr && thread != INVALID_HANDLE_VALUE) {
        CloseHandle(thread);
    }
    thread = INVALID_HANDLE_VALUE;
}

DWORD WINAPI MonitorThread::entry(LPVOID self) {
    try {
        return static_cast<MonitorThread*>(self)->runLoop();
    } catch (const OrvaUtils::Exception& exception) {
        Logger::instance().write(exception.message(), LogLevel::Error);
    } catch (...) {
        Logger::instance().write(L"Generic exception", LogLevel::Error);
    }
    return 0;
}

DWORD MonitorThread::runLoop() {
    if (!loop.begin()) {
        return 0;
    }
    EventModify(decided, EVENT_SET);
    return loop.run();
}
