#include "modules/buzzer/TouchBuzzer.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;
using panel::Behaviour;

TEST(TouchBuzzer, AsksTheDriverForAToneOfAtMostASecond) {
    using Words = std::vector<std::uint32_t>;
    const auto lastWords = [] {
        const std::vector<panel::Request> all = devices().requests("BZR1");
        return all.empty() ? Words{} : all.back().words;
    };
    TouchBuzzer buzzer(1500, 3400);
    const struct {
        std::int32_t duration;
        std::int32_t used;
    } cases[] = {{0, 0}, {50, 50}, {1000, 1000}, {1001, 1000}, {0x7FFFFFFF, 1000}};
    for (const auto& [duration, used] : cases) {
        EXPECT_EQ(buzzer.beep(duration, 2400), used);
        EXPECT_EQ(lastWords(), (Words{2400, static_cast<std::uint32_t>(used)}));
    }
    int value = 0;
    buzzer.notify(value);
    EXPECT_EQ(lastWords(), (Words{3400, 1000})) << "as it was made";
    startTrace();
    EXPECT_EQ(buzzer.beep(-1, 2400), -1) << "the limit is signed, the request is not";
    const Lines asked = trace({"DeviceIoControl"});
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_NE(asked[0].find(", 0x1012ef4, {60 09 00 00 ff ff ff ff})"), std::string::npos) << asked[0];
    devices().setBehaviour("BZR1", {Behaviour::Kind::refuse, 5});
    EXPECT_EQ(buzzer.beep(50, 3400), 50) << "a refusal does not matter";
    devices().setPresent("BZR1", false);
    TouchBuzzer silent(50, 3400);
    EXPECT_EQ(silent.beep(50, 3400), -1);
}
