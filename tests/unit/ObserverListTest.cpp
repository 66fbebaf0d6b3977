#include "modules/ObserverList.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/OtherThread.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace testing_panel;

namespace {

struct Observer {
    std::function<void()> action;
};

} // namespace

TEST(ObserverList, CallsInOrderWhoIsThere) {
    std::string called;
    ObserverList<Observer> list;
    Observer a{[&] { called += 'a'; }};
    Observer b{[&] { called += 'b'; }};
    Observer c{[&] { called += 'c'; }};
    const auto notification = [&] {
        called.clear();
        list.notify([](Observer& observer) { observer.action(); });
        return called;
    };
    EXPECT_EQ(notification(), "");
    for (Observer* each : {&a, &b, &a, &c, &b}) {
        list.add(each);
    }
    EXPECT_EQ(notification(), "abacb");
    list.remove(&b);
    list.remove(&b); // which is not there
    EXPECT_EQ(notification(), "aac");
    list.add(&b);
    list.add(&c);
    EXPECT_EQ(notification(), "aacbc") << "behind all others";
    // From within: the next ones, and itself.
    a.action = [&] {
        called += 'A';
        list.remove(&c);
        list.remove(&a);
    };
    EXPECT_EQ(notification(), "Ab");
    EXPECT_EQ(notification(), "b");
    b.action = [] { throw 1; };
    EXPECT_THROW(notification(), int);
    list.remove(&b);
    list.waitForVisits(&b, 1000);
    EXPECT_EQ(GetTickCount(), 0U) << "what was thrown has ended the notification";
}

TEST(ObserverList, WaitsForCallsOfTheRemovedOneAlone) {
    ObserverList<Observer> list;
    Observer hung{[] { Sleep(100000); }};
    Observer busy{[] { Sleep(4995); }};
    const auto notify = [&] { list.notify([](Observer& observer) { observer.action(); }); };
    const auto removal = [&](Observer& observer) {
        const DWORD begun = GetTickCount();
        list.remove(&observer);
        list.waitForVisits(&observer, 20000);
        return GetTickCount() - begun;
    };
    list.add(&hung);
    OtherThread first(notify);
    advance(1);
    EXPECT_EQ(removal(hung), 20000U);
    EXPECT_EQ(removal(hung), 0U) << "given up";
    list.add(&hung); // as another one that has got the same address
    EXPECT_EQ(removal(hung), 0U);
    list.add(&busy);
    list.add(&busy);
    OtherThread second(notify);
    advance(1000);
    EXPECT_EQ(removal(busy), 4000U) << "not the second registration";
    list.add(&hung);
    OtherThread third([&] {
        list.notify([](Observer& observer, ObserverList<Observer>::Visit& visit) {
            visit.end();
            observer.action();
        });
    });
    advance(1);
    EXPECT_EQ(removal(hung), 0U) << "left by its call";
}

// What the thread sanitizer looks at.
TEST(ObserverList, LosesObserversWhileTheyAreNotified) {
    ObserverList<Observer> list;
    std::atomic<bool> ended = false;
    int calls[2] = {};
    const auto notifyOften = [&](int& count) {
        return [&] {
            while (!ended) {
                list.notify([&](Observer& observer) {
                    observer.action();
                    ++count;
                });
                Sleep(1);
            }
        };
    };
    OtherThread first(notifyOften(calls[0]));
    OtherThread second(notifyOften(calls[1]));
    for (int round = 0; round < 2000; ++round) {
        std::unique_ptr<Observer> observers[3];
        for (auto& each : observers) {
            int alive = 1;
            each = std::make_unique<Observer>(Observer{[alive] { EXPECT_EQ(alive, 1); }});
            list.add(each.get());
        }
        advance(1);
        for (auto& each : observers) {
            list.remove(each.get());
            list.waitForVisits(each.get(), 20000);
            each.reset();
        }
    }
    ended = true;
    first.join();
    second.join();
    EXPECT_GT(calls[0] + calls[1], 2000);
}
