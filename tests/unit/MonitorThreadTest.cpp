#include "modules/MonitorThread.h"
#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

using namespace testing_panel;

namespace {

struct ProbeException : OrvaUtils::Exception {
    using Exception::Exception;
};

const auto probeFailure = messageOf<ProbeException>;

class Probe : public MonitorThread {
public:
    using MonitorThread::Handles;
    using Work = std::function<void(Probe&)>;

    explicit Probe(Work whatTheThreadDoes, Handles ofThreadAndEvents = Handles::Close)
        : MonitorThread(
              [](MonitorThread& self) -> DWORD {
                  auto& probe = static_cast<Probe&>(self);
                  probe.work(probe);
                  return 0;
              },
              [](const wchar_t* message) { throw ProbeException(message); }, ofThreadAndEvents),
          work(std::move(whatTheThreadDoes)) {
        createEvents();
    }
    ~Probe() {
        ++deleted;
    }

    void decide() {
        running = true;
        tellDecision();
    }
    DWORD waitForStop(DWORD milliseconds = INFINITE) {
        return WaitForSingleObject(stopEvent, milliseconds);
    }
    void clearRunning() {
        running = false;
    }

    Work work;
    static inline int deleted = 0;
};

void watch(Probe& probe) {
    probe.decide();
    probe.waitForStop();
    probe.clearRunning();
}

// Goes on for so long behind the request to stop.
Probe::Work lingering(DWORD milliseconds) {
    return [=](Probe& probe) {
        probe.decide();
        probe.waitForStop();
        Sleep(milliseconds);
    };
}

Probe::Work late(DWORD milliseconds) {
    return [=](Probe& probe) {
        Sleep(milliseconds);
        watch(probe);
    };
}

void untellable(Probe& probe) {
    failCall("EventModify");
    watch(probe);
}

void throwing(Probe& probe) {
    probe.decide();
    throw 1;
}

DWORD ticksOf(const std::function<void()>& operation) {
    const DWORD begun = GetTickCount();
    operation();
    return GetTickCount() - begun;
}

std::size_t closed() {
    return trace({"CloseHandle"}).size();
}

} // namespace

TEST(MonitorThread, NeedsItsEvents) {
    for (const unsigned call : {1U, 2U}) {
        for (const auto handles : {Probe::Handles::Close, Probe::Handles::LeaveOpen}) {
            startTrace();
            failCall("CreateEventW", call);
            EXPECT_EQ(probeFailure([&] { Probe probe(watch, handles); }), L"Cannot create event");
            EXPECT_EQ(closed(), 1U);
        }
    }
}

TEST(MonitorThread, StartsAndStopsWhateverFails) {
    constexpr const wchar_t* none = L"none";
    constexpr const wchar_t* stuck = L"Failed to terminate monitor thread";
    const struct {
        const char* name;
        Probe::Work work;
        const char* refused; // of the owner's calls; none: all is well
        unsigned call;
        bool ever;
        bool startsAgain; // it does not run behind the first start
        DWORD starting; // ms
        const wchar_t* stopped;
        DWORD stopping;
    } cases[] = {
        {"runs", watch, nullptr, 0, false, false, 0, none, 0},
        {"gives up", [](Probe&) {}, nullptr, 0, false, true, 0, none, 0},
        {"no thread", watch, "CreateThread", 1, true, true, 0, none, 0},
        {"decides late", late(9000), nullptr, 0, false, false, 9000, none, 0},
        {"cannot tell", untellable, nullptr, 0, false, false, 20000, none, 0},
        {"throws", throwing, nullptr, 0, false, false, 0, none, 0},
        {"start's wait refused", late(10), "WaitForMultipleObjects", 1, false, false, 10, none, 0},
        {"stop's wait refused", lingering(10), "WaitForSingleObject", 1, false, false, 0, none, 10},
        {"refused for ever", lingering(10), "WaitForSingleObject", 1, true, false, 0, stuck, 0},
        {"ends in time", lingering(19999), nullptr, 0, false, false, 0, none, 19999},
        {"ends too late", lingering(20001), nullptr, 0, false, false, 0, stuck, 20000},
        {"cannot be told", watch, "EventModify", 3, false, false, 0, stuck, 20000},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        auto* const probe = new Probe(each.work);
        EXPECT_TRUE(probe->hasEnded());
        EXPECT_EQ(probeFailure([&] { probe->stop(); }), L"none") << "never started";
        if (each.refused != nullptr) {
            failCall(each.refused, each.call, each.ever);
        }
        EXPECT_EQ(ticksOf([&] { EXPECT_TRUE(probe->start()); }), each.starting);
        if (!each.startsAgain) {
            EXPECT_FALSE(probe->start());
        }
        EXPECT_EQ(ticksOf([&] { EXPECT_EQ(probeFailure([&] { probe->stop(); }), each.stopped); }), each.stopping);
        driver().clearFaults();
        EXPECT_EQ(probe->hasEnded(), each.stopped == none);
        advance(1000);
        EXPECT_EQ(probeFailure([&] { probe->stop(); }), L"none") << "at the latest now";
        EXPECT_TRUE(probe->hasEnded());
        delete probe;
    }
}

// The first thread decides when nobody waits any more, and does not hear that it is to end.
TEST(MonitorThread, StartsAnewWithoutWhatTheLastThreadHasLeft) {
    auto* const probe = new Probe([](Probe& self) {
        Sleep(25000);
        self.decide();
        Sleep(1000);
        self.clearRunning();
    });
    EXPECT_EQ(ticksOf([&] { EXPECT_TRUE(probe->start()); }), 20000U);
    EXPECT_FALSE(probe->hasEnded()) << "though it does not run yet";
    advance(5500);
    probe->stop();
    probe->work = [](Probe& self) {
        Sleep(700);
        EXPECT_EQ(self.waitForStop(0), DWORD{WAIT_TIMEOUT});
        watch(self);
    };
    EXPECT_EQ(ticksOf([&] { EXPECT_TRUE(probe->start()); }), 700U);
    startTrace();
    stopAndDelete(probe);
    EXPECT_EQ(closed(), 3U);
}

TEST(MonitorThread, IsDeletedWhenItHasEndedAndKeptOtherwise) {
    Probe::deleted = 0;
    for (const auto handles : {Probe::Handles::Close, Probe::Handles::LeaveOpen}) {
        auto* const probe = new Probe(watch, handles);
        probe->start();
        startTrace();
        stopAndDelete(probe);
        EXPECT_EQ(closed(), handles == Probe::Handles::Close ? 3U : 0U);
    }
    EXPECT_EQ(std::exchange(Probe::deleted, 0), 2);
    for (const bool inFlight : {false, true}) {
        auto* const probe = new Probe(lingering(30000));
        probe->start();
        struct Owner {
            ~Owner() noexcept(false) {
                stopAndDelete(probe);
            }
            Probe* probe;
        };
        EXPECT_EQ(probeFailure([&] {
                      const Owner owner{probe};
                      if (inFlight) {
                          throw ProbeException(L"in flight");
                      }
                  }),
                  inFlight ? L"in flight" : L"Failed to terminate monitor thread");
        advance(30000); // what the thread uses is there
    }
    EXPECT_EQ(Probe::deleted, 0);
}

TEST(MonitorThread, LetsNothingOutOfItsThread) {
    struct : LogListener {
        void receive(const LogRecord& record) override {
            if (record.message == L"too long") {
                throw std::bad_alloc(); // memory is short
            }
            messages += record.message + L'|';
        }
        std::wstring messages;
    } log;
    Logger::instance().addListener(&log);
    for (const std::function<void()>& thrown : std::initializer_list<std::function<void()>>{
             [] { throw ProbeException(L"Cannot update driver settings"); },
             [] { throw OrvaUtils::Exception(); },
             [] { throw OrvaUtils::Exception(L"too long"); },
             [] { throw std::runtime_error("hidden"); },
             [] { throw 1; },
         }) {
        Probe probe([&](Probe& self) {
            self.decide();
            thrown();
        });
        EXPECT_TRUE(probe.start());
        EXPECT_FALSE(probe.start()) << "it counts as running";
        probe.stop();
    }
    EXPECT_EQ(log.messages, L"Cannot update driver settings|Generic Exception|Generic exception|Generic exception|");
}
