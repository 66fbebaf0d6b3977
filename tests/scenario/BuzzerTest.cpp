// The touch buzzer: from a touch to the driver's request, its settings, and what fails.
#include "tests/support/ScenarioPanel.h"
#include "tests/support/Touches.h"

#include <gtest/gtest.h>

#include <algorithm>

using Words = std::vector<std::uint32_t>;
using panel::Behaviour;
using panel::Touch;

namespace {

constexpr const char* settingsFile = "\\MMCMemory\\Tarvex\\TouchBuzzerConfig.xml";

std::string settings(bool enabled, int frequency) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<TouchBuzzer>\n"
           "    <Settings>\n"
           "        <Enabled>" +
           std::to_string(enabled) +
           "</Enabled>\n"
           "        <Frequency>" +
           std::to_string(frequency) +
           "</Frequency>\n"
           "    </Settings>\n"
           "</TouchBuzzer>\n";
}

// A panel with an installed helper whose screen saver is off.
class BuzzerPanel : public ScenarioPanel {
public:
    explicit BuzzerPanel(const std::string& content) {
        install();
        write("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml",
              "<ScreenSaver><Settings><Enabled>0</Enabled><UserInactivityTimeout>1</UserInactivityTimeout>"
              "<MinLuminosityLevel>1</MinLuminosityLevel></Settings></ScreenSaver>");
        write(settingsFile, content);
    }

    void startHelper() {
        driver().start(helper);
        ASSERT_TRUE(reachesLoop());
    }

    std::optional<std::int64_t> tell(std::uint64_t code) {
        return panel::sendMessage(panel::findWindow("ORVATarvexHelper"), "ORVATarvexBuzzerMsg", code, 0, limit);
    }

    std::optional<std::int64_t> reload(const std::string& content) {
        write(settingsFile, content);
        return tell(1);
    }

    // The frequencies of what the buzzer's driver was asked for by a touch.
    Words clicksOf(Touch touch) {
        const std::size_t before = requests().size();
        panel::touch(touch);
        driver().settle();
        Words frequencies;
        for (std::size_t index = before; index < requests().size(); ++index) {
            EXPECT_EQ(requests()[index].words.size(), 2U);
            EXPECT_EQ(requests()[index].words.back(), 50U);
            frequencies.push_back(requests()[index].words.front());
        }
        return frequencies;
    }

    std::vector<panel::Request> requests() {
        return panel().devices().requests("BZR1");
    }

    std::uint32_t threads() {
        return driver().status().processes.at(0).threads;
    }

    Lines buzzerLog() {
        Lines lines = log();
        std::erase_if(lines, [](const std::string& line) { return line.find("BuzzerModule") == std::string::npos; });
        return lines;
    }

    // How often the helper has called a function.
    std::ptrdiff_t calls(const std::string& function) {
        const Lines lines = trace();
        return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.find(' ' + function + '[') != std::string::npos;
        });
    }
};

} // namespace

TEST(Buzzer, ClicksOnceAPressAndNotOtherwise) {
    BuzzerPanel panel(settings(true, 3400));
    panel.startHelper();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.clicksOf(moved), Words{});
    EXPECT_EQ(panel.clicksOf(leftRelease), Words{});
    EXPECT_EQ(panel.clicksOf(rightPress), Words{3400});
    EXPECT_EQ(panel.clicksOf(rightRelease), Words{});
    EXPECT_EQ(panel.requests().front().thread, 3U);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.buzzerLog(), Lines{"INFO;BuzzerModule;settings loaded; enabled: 1"});
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, MergesABurstWhileTheDriverIsBusyAndDelaysNobody) {
    BuzzerPanel panel(settings(true, 3400));
    panel.startHelper();
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::block, 0});
    const std::uint64_t time = panel.driver().status().time;
    for (int press = 0; press < 6; ++press) { // each returns when the hook procedure has
        EXPECT_EQ(panel.clicksOf(leftPress), Words{});
        EXPECT_EQ(panel.clicksOf(leftRelease), Words{});
    }
    EXPECT_EQ(panel.tell(2), 1) << "the main thread is free";
    EXPECT_EQ(panel.driver().status().time, time) << "nobody waited for anything";
    panel.panel().devices().setBehaviour("BZR1", {});
    panel.driver().settle();
    ASSERT_EQ(panel.requests().size(), 2U) << "one for the first press, one for all others";
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(Buzzer, EndsWhileTheDriverIsBusy) {
    BuzzerPanel panel(settings(true, 3400));
    panel.startHelper();
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::delay, 300});
    panel.driver().setTracing(true);
    panel.clicksOf(leftPress);
    const std::uint64_t time = panel.driver().status().time;
    EXPECT_EQ(panel.reload(settings(false, 3400)), 0);
    const std::uint64_t waited = panel.driver().status().time - time;
    EXPECT_TRUE(waited >= 300 && waited <= 310) << "the buzzer goes when it has its answer, not after " << waited;
    const Lines calls = panel.trace();
    const auto last = [&](const char* function) {
        return std::find_if(calls.rbegin(), calls.rend(),
                            [&](const std::string& call) {
                                return call.find(std::string(" ") + function) != std::string::npos;
                            }) -
               calls.rbegin();
    };
    EXPECT_LT(last("CloseHandle["), last("DeviceIoControl[")) << "the driver is closed behind the click";
    EXPECT_EQ(panel.reload(settings(true, 3400)), 0);
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::block, 0});
    panel.clicksOf(leftPress);
    const std::uint64_t hung = panel.driver().status().time;
    for (const bool enabled : {false, true, false, true, false, true}) {
        EXPECT_EQ(panel.reload(settings(enabled, 3400)), 0);
        EXPECT_EQ(panel.driver().status().time - hung, 20000U) << "waits once for the click that hangs";
    }
    panel.panel().devices().setBehaviour("BZR1", {});
    panel.driver().settle();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::block, 0});
    panel.clicksOf(leftPress);
    EXPECT_EQ(panel.terminate(), 0U) << "also when there never is an answer";
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, IsSwitchedByReloadingItsSettings) {
    BuzzerPanel panel(settings(false, 3400));
    panel.driver().setTracing(true);
    panel.startHelper();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.calls("SetWindowsHookExW"), 0);
    EXPECT_EQ(panel.reload(settings(true, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.reload(settings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400}) << "a buzzer that is there keeps its frequency";
    EXPECT_EQ(panel.calls("SetWindowsHookExW"), 1);
    EXPECT_EQ(panel.reload(settings(false, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.reload(settings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{1000});
    EXPECT_EQ(panel.reload("<TouchBuzzer><Settings><Enabled>1</Enabled></Settings></TouchBuzzer>"), 2);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{}) << "settings that cannot be read switch it off";
    EXPECT_EQ(panel.tell(0), 1);
    EXPECT_EQ(panel.tell(2), 1);
    EXPECT_EQ(panel.terminate(), 0U);
    const auto handled = [](int code, int result) {
        return "INFO;BuzzerModule;message handled " + std::to_string(code) + " result: " + std::to_string(result);
    };
    Lines expected{"INFO;BuzzerModule;settings loaded; enabled: 0"};
    for (const char* enabled : {"1", "1", "0", "1"})
        expected.insert(expected.end(),
                        {"INFO;BuzzerModule;message received 1",
                         std::string("INFO;BuzzerModule;settings loaded; enabled: ") + enabled, handled(1, 0)});
    expected.insert(expected.end(), {"INFO;BuzzerModule;message received 1", "ERROR;BuzzerModule;settings error",
                                     handled(1, 2), "INFO;BuzzerModule;message received 0", handled(0, 1),
                                     "INFO;BuzzerModule;message received 2", handled(2, 1)});
    EXPECT_EQ(panel.buzzerLog(), expected);
}

TEST(Buzzer, ClicksOnceAPressAfterManyRoundsAndEndsWithTheThreadsThatTheyLeave) {
    BuzzerPanel panel(settings(true, 3400));
    panel.startHelper();
    const std::uint32_t others = panel.threads() - 1;
    constexpr std::uint32_t rounds = 20;
    for (std::uint32_t round = 1; round < rounds; ++round) {
        EXPECT_EQ(panel.reload(settings(false, 3400)), 0);
        EXPECT_EQ(panel.reload(settings(true, 3400)), 0);
        EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    }
    EXPECT_EQ(panel.threads(), others + rounds);
    for (std::uint32_t press = 0; press < 2 * rounds; ++press)
        EXPECT_EQ(panel.clicksOf(rightPress), Words{3400});
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, ReplacesANegativeFrequencyByThePanelsOwn) {
    const struct {
        std::uint16_t model;
        std::uint32_t frequency;
    } cases[] = {{1026, 3400}, {1027, 3400}, {1030, 3400}, {1025, 2400}, {1028, 2400}, {2, 2400}};
    for (const auto& [model, frequency] : cases) {
        BuzzerPanel panel("<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>-1</Frequency>"
                          "<Other/></Settings></TouchBuzzer>");
        const char code[] = {static_cast<char>(model & 0xFF), static_cast<char>(model >> 8)};
        panel.panel().devices().setTag(18, {code, sizeof code});
        panel.startHelper();
        EXPECT_EQ(panel.read(settingsFile), settings(true, static_cast<int>(frequency)));
        EXPECT_EQ(panel.clicksOf(leftPress), Words{frequency}) << model;
        EXPECT_EQ(panel.terminate(), 0U);
    }
}

TEST(Buzzer, NeedsNoTagStoreAndAsksItAgain) {
    const struct {
        const char* function; // none: the library is absent
        Behaviour behaviour;
    } cases[] = {{nullptr, {}},
                 {"TAG_Open", {Behaviour::Kind::refuse, 5}},
                 {"TAG_Get_Data", {Behaviour::Kind::refuse, 5}},
                 {"TAG_Get_Data", {Behaviour::Kind::code, 7}}}; // which answers yes all the same
    for (const auto& [function, behaviour] : cases) {
        SCOPED_TRACE(function ? function : "no library");
        BuzzerPanel panel(settings(false, -5));
        const panel::Devices devices = panel.panel().devices();
        devices.setTag(18, "\x02\x04");
        if (function)
            devices.setBehaviour("tags", behaviour, function);
        else
            devices.setPresent("tags", false);
        panel.startHelper();
        EXPECT_EQ(panel.read(settingsFile), settings(false, 2400));
        devices.setPresent("tags", true);
        devices.setBehaviour("tags", {});
        EXPECT_EQ(panel.reload(settings(true, -5)), 0);
        EXPECT_EQ(panel.read(settingsFile), settings(true, 3400));
        EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(Buzzer, DoesNotMindSettingsThatCannotBeWritten) {
    BuzzerPanel panel(settings(true, -1));
    std::filesystem::permissions(panel.panel().hostPath(settingsFile), std::filesystem::perms::owner_read);
    panel.startHelper();
    EXPECT_EQ(panel.read(settingsFile), settings(true, -1));
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, IsOffWithoutSettings) {
    BuzzerPanel panel("");
    std::filesystem::remove(panel.panel().hostPath(settingsFile));
    panel.startHelper();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.tell(1), 2);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.buzzerLog().front(), "ERROR;BuzzerModule;settings error");
}

TEST(Buzzer, StaysSilentWithoutItsDriver) {
    BuzzerPanel panel(settings(true, 3400));
    panel.panel().devices().setPresent("BZR1", false);
    panel.driver().setTracing(true);
    panel.startHelper();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.calls("CallNextHookEx"), 1) << "the touch was heard";
    EXPECT_EQ(panel.calls("DeviceIoControl"), 1) << "of the eMMC's counter alone";
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, StaysSilentWhenTheHookIsRefused) {
    BuzzerPanel panel(settings(true, 3400));
    panel.driver().addFault({"SetWindowsHookExW", "TarvexHelper.exe", 1, 1, 1, false, panel::FaultAction::fail, 0});
    panel.startHelper();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.tell(1), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{}) << "it is not asked for again";
    EXPECT_EQ(panel.reload(settings(false, 3400)), 0);
    EXPECT_EQ(panel.reload(settings(true, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, KeepsAHookThatThePlatformDoesNotRemove) {
    BuzzerPanel panel(settings(true, 3400));
    panel.driver().addFault({"UnhookWindowsHookEx", "TarvexHelper.exe", 1, 1, 1, false, panel::FaultAction::fail, 0});
    panel.startHelper();
    const std::uint32_t threads = panel.threads();
    EXPECT_EQ(panel.reload(settings(false, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.reload(settings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{1000});
    EXPECT_EQ(panel.threads(), threads);
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(Buzzer, WithoutItsEventsThereIsNoHelper) {
    BuzzerPanel panel(settings(true, 3400));
    panel.startHelper();
    const Lines log = panel.log();
    panel.driver().addFault({"CreateEventW", "TarvexHelper.exe", 2, 1, 1});
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 0U) << "a second instance ends as always";
    EXPECT_EQ(panel.log(), log);
    EXPECT_EQ(panel.terminate(), 0U);
    for (const std::uint32_t call : {1U, 2U}) {
        const std::size_t lines = panel.log().size();
        panel.driver().addFault({"CreateEventW", "TarvexHelper.exe", call + 2, 1, call});
        EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
        const Lines after = panel.log();
        EXPECT_EQ(Lines(after.begin() + static_cast<std::ptrdiff_t>(lines), after.end()),
                  (Lines{"INFO;Init of Helper",
                         "ERROR;Exception OrvaUtils::Exception: Cannot create events for mouse hook"}));
    }
    panel.startHelper();
    EXPECT_EQ(panel.terminate(), 0U);
}
