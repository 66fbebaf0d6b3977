#include "OrvaUtils/Concurrency/ISystem.h"
#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"
#include "tests/support/TestPanel.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace OrvaUtils::Concurrency;
using namespace testing_panel;

namespace {

// Runs a function; `stop` sets an event that the function may wait for.
struct Worker : IRunnable {
    explicit Worker(std::function<void(IEvent& stopEvent)> body) : function(std::move(body)) {}
    void run() override {
        function(*stopped);
    }
    void stop() override {
        stopped->set();
    }
    std::function<void(IEvent&)> function;
    std::unique_ptr<IEvent> stopped{getSystem().createEvent()};
};

} // namespace

TEST(Concurrency, EventStaysSetUntilReset) {
    const std::unique_ptr<IEvent> event(getSystem().createEvent());
    EXPECT_EQ(event->wait(0), WAIT_TIMEOUT);
    EXPECT_EQ(event->wait(50), WAIT_TIMEOUT);
    EXPECT_TRUE(event->set());
    EXPECT_EQ(event->wait(0), WAIT_OBJECT_0);
    EXPECT_EQ(event->wait(), WAIT_OBJECT_0);
    EXPECT_TRUE(event->reset());
    EXPECT_EQ(event->wait(0), WAIT_TIMEOUT);
    failCall("CreateEventW");
    const std::unique_ptr<IEvent> broken(getSystem().createEvent());
    EXPECT_EQ(broken->wait(0), WAIT_FAILED);
    EXPECT_EQ(broken->wait(), WAIT_FAILED);
    EXPECT_FALSE(broken->set());
    EXPECT_FALSE(broken->reset());
}

TEST(Concurrency, EventClosesItsHandle) {
    startTrace();
    std::unique_ptr<IEvent>(getSystem().createEvent()).reset();
    const std::vector<std::string> calls = trace();
    ASSERT_EQ(calls.size(), 2U);
    const std::string created = "CreateEventW(1, 0, null) = ";
    ASSERT_TRUE(calls[0].starts_with(created)) << calls[0];
    EXPECT_EQ(calls[1], "CloseHandle(" + calls[0].substr(created.size()) + ") = 1");
}

TEST(Concurrency, CriticalSectionIsLeftAsOftenAsEntered) {
    const std::unique_ptr<ICriticalSection> section(getSystem().createCriticalSection());
    std::atomic<bool> inside = false;
    Worker worker([&](IEvent&) {
        section->enter();
        inside = true;
        section->leave();
    });
    const std::unique_ptr<IThread> thread(getSystem().createThread());
    section->enter();
    section->enter();
    ASSERT_NE(thread->start(&worker), nullptr);
    section->leave();
    getSystem().sleep(100);
    EXPECT_FALSE(inside);
    section->leave();
    EXPECT_EQ(thread->stop(), WAIT_OBJECT_0);
    EXPECT_TRUE(inside);
}

TEST(Concurrency, ThreadStopsWhenItsRunnableReturns) {
    bool ended = false;
    Worker worker([&](IEvent& stopEvent) {
        stopEvent.wait();
        getSystem().sleep(100);
        ended = true;
    });
    std::unique_ptr<IThread> thread(getSystem().createThread());
    const HANDLE handle = thread->start(&worker);
    EXPECT_EQ(WaitForSingleObject(handle, 100), WAIT_TIMEOUT);
    EXPECT_EQ(thread->stop(), WAIT_OBJECT_0);
    EXPECT_TRUE(ended);
    thread.reset();
    EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED) << "closed";
    EXPECT_EQ(worker.stopped->wait(0), WAIT_OBJECT_0) << "the runnable is its owner's";
    failCall("CreateThread");
    thread.reset(getSystem().createThread());
    EXPECT_EQ(thread->start(&worker), nullptr);
}

TEST(Concurrency, CountsTicksPastTheWrap) {
    setTicks(0xFFFFFFF0);
    EXPECT_EQ(getSystem().getTickCount64(), 0xFFFFFFF0U);
    EXPECT_EQ(getSystem().getTickCount64(), 0xFFFFFFF0U) << "the same tick is no wrap";
    getSystem().sleep(0x20);
    EXPECT_EQ(getSystem().getTickCount64(), 0x100000010U);
    setTicks(5);
    EXPECT_EQ(getSystem().getTickCount64(), 0x200000005U);
}

TEST(Concurrency, StartsProcesses) {
    put("\\Windows\\one.exe", "/bin/false"); // which knows nothing of panels
    put("\\Windows\\actor.exe", programFile("Actor"));
    const struct {
        const wchar_t* path;
        const wchar_t* arguments;
        std::uint32_t exitCode;
        const char* call;
    } cases[] = {
        {L"\\Windows\\one.exe", L"", 1, R"(CreateProcessW("\Windows\one.exe", null) = 1)"},
        {L"\\Windows\\actor.exe", L"exit 7", 7, R"(CreateProcessW("\Windows\actor.exe", "exit 7") = 1)"},
        {L"", L"\\Windows\\actor.exe exit 8", 8, R"(CreateProcessW(null, "\Windows\actor.exe exit 8") = 1)"},
    };
    for (const auto& [path, arguments, exitCode, call] : cases) {
        const std::unique_ptr<IProcess> process(getSystem().createProcess(path, arguments, {}));
        EXPECT_EQ(process->getHandle(), nullptr);
        EXPECT_EQ(process->getExitCode(), 0U);
        startTrace();
        const HANDLE handle = process->start();
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(trace().at(0), call);
        EXPECT_EQ(process->getHandle(), handle);
        EXPECT_EQ(process->getExitCode(), STILL_ACTIVE) << "it is loaded while its starter waits";
        EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(process->getExitCode(), exitCode);
        failCall("CreateProcessW");
        EXPECT_EQ(process->start(), nullptr);
        EXPECT_EQ(process->getHandle(), nullptr);
        EXPECT_EQ(process->getExitCode(), 0U);
    }
    const std::unique_ptr<IProcess> missing(getSystem().createProcess(L"\\Windows\\missing.exe", L"", {}));
    EXPECT_EQ(missing->start(), nullptr);
    const std::unique_ptr<IProcess> nothing(getSystem().createProcess(L"", L"", {}));
    EXPECT_EQ(nothing->start(), nullptr);
}

TEST(Concurrency, ProcessClosesTheHandlesOfItsLastStartOnly) {
    put("\\Windows\\actor.exe", programFile("Actor"));
    std::unique_ptr<IProcess> process(getSystem().createProcess(L"\\Windows\\actor.exe", L"sleep 1000", {}));
    const HANDLE first = process->start();
    startTrace();
    const HANDLE second = process->start();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(trace().size(), 1U) << "the first child's handles are forgotten, not closed";
    startTrace();
    process.reset();
    EXPECT_EQ(trace().size(), 2U) << "the process's and its thread's";
    for (const std::string& call : trace()) {
        EXPECT_TRUE(call.starts_with("CloseHandle(") && call.ends_with(" = 1")) << call;
    }
    EXPECT_EQ(WaitForSingleObject(second, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForSingleObject(first, INFINITE), WAIT_OBJECT_0) << "the child went on";
}

TEST(Concurrency, KeepsTheParametersOfAProcess) {
    std::map<std::wstring, std::wstring> parameters{{L"a", L"1"}, {L"empty", L""}};
    const std::unique_ptr<IProcess> process(getSystem().createProcess(L"\\a.exe", L"", parameters));
    parameters[L"a"] = L"2";
    std::wstring value = L"untouched";
    EXPECT_FALSE(process->getParameter(L"A", value));
    EXPECT_EQ(value, L"untouched");
    EXPECT_TRUE(process->getParameter(L"a", value));
    EXPECT_EQ(value, L"1");
    EXPECT_TRUE(process->getParameter(L"empty", value));
    EXPECT_EQ(value, L"");
}
