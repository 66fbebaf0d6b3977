#include "modules/buzzer/TouchBuzzer.h"
#include "modules/buzzer/MouseHook.h"
#include "modules/buzzer/TouchBuzzerConfig.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;
using panel::Behaviour;

namespace {

constexpr const char* path = "\\Test\\TouchBuzzerConfig.xml";
constexpr const wchar_t* widePath = L"\\Test\\TouchBuzzerConfig.xml";

using Words = std::vector<std::uint32_t>;

panel::Request lastRequest() {
    const std::vector<panel::Request> all = devices().requests("BZR1");
    return all.empty() ? panel::Request{} : all.back();
}

} // namespace

TEST(TouchBuzzer, AsksTheDriverForAToneOfAtMostASecond) {
    TouchBuzzer buzzer(1500, 3400);
    const struct {
        std::int32_t duration;
        std::int32_t used;
    } cases[] = {{0, 0}, {50, 50}, {1000, 1000}, {1001, 1000}, {0x7FFFFFFF, 1000}};
    for (const auto& [duration, used] : cases) {
        EXPECT_EQ(buzzer.beep(duration, 2400), used);
        EXPECT_EQ(lastRequest().words, (Words{2400, static_cast<std::uint32_t>(used)}));
    }
    int value = 0;
    buzzer.notify(value);
    EXPECT_EQ(lastRequest().words, (Words{3400, 1000})) << "as it was made";
    startTrace();
    EXPECT_EQ(buzzer.beep(-1, 2400), -1) << "the limit is signed, the request is not";
    EXPECT_NE(trace().at(0).find(", 0x1012ef4, {60 09 00 00 ff ff ff ff})"), std::string::npos) << trace().at(0);
}

TEST(TouchBuzzer, DoesNotMindARefusal) {
    TouchBuzzer buzzer(50, 3400);
    devices().setBehaviour("BZR1", {Behaviour::Kind::refuse, 5});
    EXPECT_EQ(buzzer.beep(50, 3400), 50);
    EXPECT_EQ(lastRequest().error, 5U);
}

TEST(TouchBuzzer, IsSilentWithoutADriver) {
    devices().setPresent("BZR1", false);
    TouchBuzzer buzzer(50, 3400);
    devices().setPresent("BZR1", true); // too late
    startTrace();
    EXPECT_EQ(buzzer.beep(50, 3400), -1);
    EXPECT_TRUE(trace().empty());
}

TEST(TouchBuzzer, OpensTheDriverForItsLife) {
    MouseHook::instance();
    startTrace();
    { const TouchBuzzer buzzer(50, 3400); }
    const Lines calls = trace({"CreateFileW", "CloseHandle"});
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].substr(0, calls[0].find(')')), R"(CreateFileW("BZR1:", 0xc0000000, 0, 3, 0x80)");
    EXPECT_EQ(calls[1], "CloseHandle(" + calls[0].substr(calls[0].rfind(' ') + 1) + ") = 1");
}

TEST(TouchBuzzerConfig, ReadsWhatItWrites) {
    writeFile(path, "");
    TouchBuzzerConfig written;
    written.enabled = true;
    written.frequency = -2147483647 - 1;
    EXPECT_TRUE(written.write(widePath));
    EXPECT_EQ(readFile(path), buzzerSettings(true, written.frequency));
    TouchBuzzerConfig config;
    EXPECT_FALSE(config.enabled);
    EXPECT_EQ(config.frequency, 3400);
    EXPECT_TRUE(config.read(widePath));
    EXPECT_TRUE(config.enabled);
    EXPECT_EQ(config.frequency, written.frequency);
    EXPECT_TRUE(TouchBuzzerConfig().write(widePath));
    EXPECT_NE(readFile(path).find("<Enabled>0<"), std::string::npos);
}

TEST(TouchBuzzerConfig, WantsBothValues) {
    const struct {
        const char* content;
        bool read;
    } cases[] = {
        {"<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>7</Frequency></Settings></TouchBuzzer>", true},
        {"<TouchBuzzer><Settings><Frequency>7</Frequency><Enabled>true</Enabled></Settings></TouchBuzzer>", true},
        {"<TouchBuzzer><Settings><Enabled>1</Enabled></Settings></TouchBuzzer>", false},
        {"<TouchBuzzer><Settings><Frequency>7</Frequency></Settings></TouchBuzzer>", false},
        {"<TouchBuzzer><Settings><Enabled>yes</Enabled><Frequency>7</Frequency></Settings></TouchBuzzer>", false},
        {"<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>high</Frequency></Settings></TouchBuzzer>", false},
        {"<TouchBuzzer><Enabled>1</Enabled><Frequency>7</Frequency></TouchBuzzer>", false},
        {"<ScreenSaver><Settings><Enabled>1</Enabled><Frequency>7</Frequency></Settings></ScreenSaver>", false},
        {"<TouchBuzzer><Settings>", false},
        {"", false},
    };
    for (const auto& [content, read] : cases) {
        writeFile(path, content);
        TouchBuzzerConfig config;
        EXPECT_EQ(config.read(widePath), read) << content;
        EXPECT_TRUE(!read || (config.enabled && config.frequency == 7)) << content;
    }
    EXPECT_FALSE(TouchBuzzerConfig().read(L"\\Test\\missing.xml"));
    EXPECT_FALSE(TouchBuzzerConfig().write(L"\\Missing\\file.xml"));
}
