#pragma once

#include "OrvaUtils/Concurrency/ISystem.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

// Runs a function on a thread of its own, to its end.
class OtherThread : OrvaUtils::Concurrency::IRunnable {
public:
    explicit OtherThread(std::function<void()> body)
        : function(std::move(body)),
          thread(OrvaUtils::Concurrency::getSystem().createThread()),
          handle(thread->start(this)) {}
    ~OtherThread() {
        join();
    }
    void join() {
        EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
    }

private:
    void run() override {
        function();
    }
    void stop() override {}
    std::function<void()> function;
    std::unique_ptr<OrvaUtils::Concurrency::IThread> thread;
    HANDLE handle;
};
