#include "ipc/MessageOnlyWindow.h"
#include "platform/panel/Client.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/OtherThread.h"

#include <atomic>
#include <gtest/gtest.h>

namespace {

constexpr UINT SHARED = 0xC100;
constexpr UINT OWN[] = {0xC200, 0xC300, 0xC400}; // where the messages of each registering thread begin
constexpr UINT OWN_COUNT = 100;
constexpr int MESSAGES = 5000; // of each client

// Answers with twice the parameter, or one more.
struct Doubling : indev::MESSAGEHANDLER {
    explicit Doubling(LRESULT more) : extra(more) {}
    LRESULT handleMessage(HWND, UINT, WPARAM wParam, LPARAM) override {
        ++handled;
        return 2 * static_cast<LRESULT>(wParam) + extra;
    }
    const LRESULT extra;
    int handled = 0; // on the loop's thread alone
};

// Whether a handler has answered.
bool asks(UINT message, int parameter) {
    const auto answer = panel::sendMessage(panel::findWindow("Stressed"), std::to_string(message),
                                           static_cast<std::uint64_t>(parameter), 0);
    return answer && *answer / 2 == parameter;
}

} // namespace

TEST(MessageStress, AnswersEachMessageWhileHandlersAreRebound) {
    MessageOnlyWindow window;
    Doubling even(0);
    Doubling odd(1);
    window.registerHandler(SHARED, &even);
    window.create(L"Stressed");
    std::atomic<int> answered = 0;
    std::atomic<int> clients = 2;
    const auto client = [&] {
        for (int number = 1; number <= MESSAGES; ++number) {
            answered += asks(SHARED, number);
        }
        --clients;
    };
    const auto registrar = [&](UINT own) {
        for (UINT turn = 0; turn < OWN_COUNT || clients > 0; ++turn) {
            window.registerHandler(SHARED, turn % 2 == 0 ? &odd : &even);
            window.registerHandler(own + turn % OWN_COUNT, &even);
        }
    };
    OtherThread stopper([&] {
        {
            OtherThread threads[] = {OtherThread(client), OtherThread(client), OtherThread([&] { registrar(OWN[0]); }),
                                     OtherThread([&] { registrar(OWN[1]); }), OtherThread([&] { registrar(OWN[2]); })};
        }
        for (const UINT own : OWN) {
            for (UINT message = own; message < own + OWN_COUNT; ++message) {
                answered += asks(message, 1);
            }
        }
        window.stop();
    });
    window.run();
    stopper.join();
    EXPECT_EQ(answered, 2 * MESSAGES + 3 * static_cast<int>(OWN_COUNT));
    EXPECT_EQ(even.handled + odd.handled, answered);
    EXPECT_GT(odd.handled, 0);
}
