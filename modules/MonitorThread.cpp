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
        // The constructor of the monitor fails, so nothing uses the handles: the destructor closes the event that
        // exists.
        handles = Handles::Close;
        fail(L"Cannot create event");
    }
}

bool MonitorThread::start() {
    if (running) {
        return false;
    }
    close(threadHandle);
    // Both events may still be set: the first by a stop that no thread heard, the second by a thread that decided too
    // late.
    EventModify(stopEvent, EVENT_RESET);
    EventModify(decisionEvent, EVENT_RESET);
    threadHandle = CreateThread(nullptr, 0, entry, this, 0, nullptr);
    if (hasThread()) {
        // A thread that gives up ends without telling its decision, so the wait also covers its end.
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
        // After a failed wait the thread may still run and use data that the owner would delete.
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
        // The exception must not leave a destructor that runs during stack unwinding.
        steps.run([this] { stop(); });
        steps.finish();
    }
}

bool MonitorThread::hasEnded() const {
    // A wait of 0 ms only looks at the thread.
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
    // A thread of an earlier start may have set `running` after `start` looked at it: only one thread runs the loop.
    return monitor.running ? 0 : monitor.loop(monitor);
}
