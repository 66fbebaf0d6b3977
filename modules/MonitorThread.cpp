#include "modules/MonitorThread.h"

#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"

namespace {

constexpr DWORD LIMIT = 20000; // ms

} // namespace

MonitorThread::MonitorThread(Loop& loopToRun)
    : loop(loopToRun),
      stopRequested(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      isReady(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

MonitorThread::~MonitorThread() {
    closeThread();
    for (const HANDLE event : {stopRequested, isReady}) {
        if (event != nullptr) {
            CloseHandle(event);
        }
    }
}

bool MonitorThread::isUsable() const {
    return stopRequested != nullptr && isReady != nullptr;
}

HANDLE MonitorThread::stopEvent() const {
    return stopRequested;
}

bool MonitorThread::start() {
    closeThread();
    EventModify(isReady, EVENT_RESET); // of a thread that was too late with it
    thread = CreateThread(nullptr, 0, entry, this, 0, nullptr);
    if (thread == nullptr) {
        return false;
    }
    // The limit is for a platform that does not set the event.
    const HANDLE decisions[] = {isReady, thread};
    if (WaitForMultipleObjects(2, decisions, FALSE, LIMIT) == WAIT_FAILED) {
        WaitForMultipleObjects(2, decisions, FALSE, LIMIT);
    }
    return true;
}

void MonitorThread::ready() {
    EventModify(isReady, EVENT_SET);
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
    isOver = ended == WAIT_OBJECT_0;
    return isOver;
}

bool MonitorThread::isOpen() const {
    return hasThread() && !isOver;
}

bool MonitorThread::hasThread() const {
    return thread != nullptr && thread != INVALID_HANDLE_VALUE;
}

void MonitorThread::closeThread() {
    if (hasThread()) {
        CloseHandle(thread);
    }
    thread = INVALID_HANDLE_VALUE;
    isOver = false;
}

DWORD WINAPI MonitorThread::entry(LPVOID self) {
    try {
        return static_cast<MonitorThread*>(self)->loop.run();
    } catch (const OrvaUtils::Exception& exception) {
        Logger::instance().write(exception.message(), LogLevel::Error);
    } catch (...) {
        Logger::instance().write(L"Generic exception", LogLevel::Error);
    }
    return 0;
}
