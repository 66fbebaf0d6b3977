#include "modules/MonitorThread.h"

#include "modules/RunThread.h"

#include <utility>

namespace {

constexpr DWORD DECISION_OR_END_LIMIT = 20000; // ms

} // namespace

MonitorThread::MonitorThread(Loop loopToRun, Failure failureToThrow, Handles ofThreadAndEvents)
    : loop(loopToRun), fail(failureToThrow), handles(ofThreadAndEvents) {}

MonitorThread::~MonitorThread() {
    close(threadHandle);
    close(stopEvent);
    close(decisionEvent);
}

void MonitorThread::createEvents() {
    stopEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    decisionEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (stopEvent == nullptr || decisionEvent == nullptr) {
        handles = Handles::Close; // there is no monitor
        fail(L"Cannot create event");
    }
}

bool MonitorThread::start() {
    if (running) {
        return false;
    }
    close(threadHandle);
    EventModify(stopEvent, EVENT_RESET); // of a stop that no thread has heard
    EventModify(decisionEvent, EVENT_RESET); // of a thread that was too late with it
    threadHandle = CreateThread(nullptr, 0, entry, this, 0, nullptr);
    if (hasThread()) {
        const HANDLE decisions[] = {decisionEvent, threadHandle};
        waitTwiceIfRefused([&] { return WaitForMultipleObjects(2, decisions, FALSE, DECISION_OR_END_LIMIT); });
    }
    return true;
}

void MonitorThread::stop() {
    if (!running) {
        return;
    }
    EventModify(stopEvent, EVENT_SET);
    if (hasThread()) {
        // A thread that nobody could wait for may still run, and use what is about to go.
        if (waitTwiceIfRefused([&] { return WaitForSingleObject(threadHandle, DECISION_OR_END_LIMIT); }) !=
            WAIT_OBJECT_0) {
            fail(L"Failed to terminate monitor thread");
        }
        close(std::exchange(threadHandle, INVALID_HANDLE_VALUE));
    }
}

void MonitorThread::stopAtEnd() {
    if (hasThread()) {
        OrvaUtils::Teardown steps;
        steps.run([this] { stop(); });
        steps.finish();
    }
}

bool MonitorThread::hasEnded() const {
    return !hasThread() || WaitForSingleObject(threadHandle, 0) == WAIT_OBJECT_0;
}

void MonitorThread::tellDecision() {
    EventModify(decisionEvent, EVENT_SET);
}

bool MonitorThread::hasThread() const {
    return threadHandle != nullptr && threadHandle != INVALID_HANDLE_VALUE;
}

void MonitorThread::close(HANDLE handle) const {
    if (handles == Handles::Close && handle != nullptr && handle != INVALID_HANDLE_VALUE) {
        CloseHandle(handle);
    }
}

DWORD WINAPI MonitorThread::entry(LPVOID self) {
    return runThread(body, self);
}

DWORD MonitorThread::body(LPVOID self) {
    auto& monitor = *static_cast<MonitorThread*>(self);
    return monitor.running ? 0 : monitor.loop(monitor);
}
