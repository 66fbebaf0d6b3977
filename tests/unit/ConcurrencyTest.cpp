#include "OrvaUtils/Concurrency/ISystem.h"
#include "tests/support/TestPanel.h"

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

TEST(Concurrency, ThreadStopsWhenItsRunnableReturns) {
    const std::unique_ptr<ICriticalSection> section(getSystem().createCriticalSection());
    bool ended = false;
    Worker worker([&](IEvent& stopEvent) {
        stopEvent.wait();
        section->enter();
        getSystem().sleep(100);
        ended = true;
        section->leave();
    });
    std::unique_ptr<IThread> thread(getSystem().createThread());
    const HANDLE handle = thread->start(&worker);
    EXPECT_EQ(WaitForSingleObject(handle, 100), WAIT_TIMEOUT);
    section->enter();
    worker.stop();
    EXPECT_EQ(WaitForSingleObject(handle, 1000), WAIT_TIMEOUT);
    section->leave();
    EXPECT_EQ(thread->stop(), WAIT_OBJECT_0);
    EXPECT_TRUE(ended);
    thread.reset();
    EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED) << "closed";
    EXPECT_EQ(worker.stopped->wait(0), WAIT_OBJECT_0) << "the runnable is its owner's";
    EXPECT_TRUE(worker.stopped->reset());
    EXPECT_EQ(worker.stopped->wait(10), WAIT_TIMEOUT);
    failCall("CreateThread");
    thread.reset(getSystem().createThread());
    EXPECT_EQ(thread->start(&worker), nullptr);
}

TEST(Concurrency, CountsTicksPastTheWrap) {
    setTicks(0xFFFFFFF0);
    EXPECT_EQ(getSystem().getTickCount64(), 0xFFFFFFF0U);
    getSystem().sleep(0x20);
    EXPECT_EQ(getSystem().getTickCount64(), 0x100000010U);
}

TEST(Concurrency, StartsProcesses) {
    put("\\Windows\\actor.exe", programFile("Actor"));
    std::unique_ptr<IProcess> process(
        getSystem().createProcess(L"\\Windows\\actor.exe", L"exit 7", {{L"name", L"value"}}));
    std::wstring value;
    EXPECT_FALSE(process->getParameter(L"Name", value));
    EXPECT_TRUE(process->getParameter(L"name", value));
    EXPECT_EQ(value, L"value");
    const auto expectNone = [&] {
        EXPECT_EQ(process->getHandle(), nullptr);
        EXPECT_EQ(process->getExitCode(), 0U);
    };
    expectNone();
    EXPECT_NE(process->start(), nullptr);
    failCall("CreateProcessW");
    EXPECT_EQ(process->start(), nullptr);
    expectNone();
    const HANDLE handle = process->start();
    EXPECT_EQ(process->getHandle(), handle);
    EXPECT_EQ(process->getExitCode(), STILL_ACTIVE) << "it is loaded while its starter waits";
    EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(process->getExitCode(), 7U);
    startTrace();
    process.reset();
    EXPECT_EQ(trace({"CloseHandle"}).size(), 2U) << "not those of the first start";
}
