// The touch buzzer: from a touch to the driver's request, its settings, and what fails.
#include "tests/support/ModuleSettings.h"
#include "tests/support/ScenarioPanel.h"
#include "tests/support/Touches.h"

#include <gtest/gtest.h>

using Words = std::vector<std::uint32_t>;
using panel::Behaviour;
using panel::Touch;

namespace {

// A panel with an installed helper whose screen saver is off.
class BuzzerPanel : public ScenarioPanel {
public:
    explicit BuzzerPanel(const std::string& content) {
        install();
        write(saverSettingsPath, saverSettings(false, 1, 1));
        write(buzzerSettingsPath, content);
    }

    std::optional<std::int64_t> tell(std::uint64_t code) {
        return send("ORVATarvexBuzzerMsg", code);
    }

    std::optional<std::int64_t> reload(const std::string& content) {
        write(buzzerSettingsPath, content);
        return tell(1);
    }

    // The frequencies of what the buzzer's driver was asked for by a touch.
    Words clicksOf(Touch touch) {
        const std::size_t before = requests().size();
        EXPECT_EQ(panel::touch(touch).kind, panel::Landing::Kind::landed); // the hook keeps it from nobody
        driver().settle();
        Words frequencies;
        for (std::size_t index = before; index < requests().size(); ++index) {
            const Words words = requests()[index].words;
            EXPECT_EQ(words, (Words{words.at(0), 50}));
            frequencies.push_back(words.at(0));
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
};

} // namespace

TEST(Buzzer, ClicksOnceAPressAndNotOtherwise) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.startInPlace();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.clicksOf(moved), Words{});
    EXPECT_EQ(panel.clicksOf(leftRelease), Words{});
    EXPECT_EQ(panel.clicksOf(rightPress), Words{3400});
    EXPECT_EQ(panel.clicksOf(rightRelease), Words{});
    EXPECT_EQ(panel.requests().at(0).thread, 3U);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.buzzerLog(), Lines{"INFO;BuzzerModule;settings loaded; enabled: 1"});
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, MergesABurstWhileTheDriverIsBusyAndDelaysNobody) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.startInPlace();
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
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.startInPlace();
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::delay, 300});
    panel.driver().setTracing(true);
    panel.clicksOf(leftPress);
    const std::uint64_t time = panel.driver().status().time;
    EXPECT_EQ(panel.reload(buzzerSettings(false, 3400)), 0);
    const std::uint64_t waited = panel.driver().status().time - time;
    EXPECT_TRUE(waited >= 300 && waited <= 310) << "the buzzer goes when it has its answer, not after " << waited;
    const std::string driver = panel.calls("DeviceIoControl").at(0).argumentList().at(0);
    Lines ofDriver;
    for (const TracedCall& call : panel.calls()) {
        if (call.argumentList().at(0) == driver)
            ofDriver.push_back(call.function);
    }
    EXPECT_EQ(ofDriver, (Lines{"DeviceIoControl", "CloseHandle"})) << "closed behind the click";
    EXPECT_EQ(panel.reload(buzzerSettings(true, 3400)), 0);
    panel.panel().devices().setBehaviour("BZR1", {Behaviour::Kind::block, 0});
    panel.clicksOf(leftPress);
    const std::uint64_t hung = panel.driver().status().time;
    for (const bool enabled : {false, true, false, true, false, true}) {
        EXPECT_EQ(panel.reload(buzzerSettings(enabled, 3400)), 0);
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
    BuzzerPanel panel(buzzerSettings(false, 3400));
    panel.driver().setTracing(true);
    panel.startInPlace();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.calls("SetWindowsHookExW").size(), 0U);
    EXPECT_EQ(panel.reload(buzzerSettings(true, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.reload(buzzerSettings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400}) << "a buzzer that is there keeps its frequency";
    EXPECT_EQ(panel.calls("SetWindowsHookExW").size(), 1U);
    const std::uint32_t threads = panel.threads();
    EXPECT_EQ(panel.reload(buzzerSettings(false, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.driver().status().hook, "");
    EXPECT_EQ(panel.reload(buzzerSettings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{1000});
    EXPECT_EQ(panel.threads(), threads + 1) << "each leaves a thread behind";
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

TEST(Buzzer, ReplacesANegativeFrequencyByThePanelsOwn) {
    const struct {
        std::uint16_t model;
        int written;
        std::uint32_t frequency;
        bool readOnly = false;
    } cases[] = {{0x402, -1, 3400}, {0x403, -1, 3400}, {0x406, -1, 3400}, {0x401, -1, 2400},
                 {0x404, -1, 2400}, {2, -1, 2400},     {0x402, 0, 0},     {0x402, -1, 3400, true}};
    for (const auto& [model, written, frequency, readOnly] : cases) {
        const std::string content = "<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>" + std::to_string(written) +
                                    "</Frequency><Other/></Settings></TouchBuzzer>";
        BuzzerPanel panel(content);
        const char code[] = {static_cast<char>(model & 0xFF), static_cast<char>(model >> 8)};
        panel.panel().devices().setTag(18, {code, sizeof code});
        if (readOnly)
            std::filesystem::permissions(panel.panel().hostPath(buzzerSettingsPath),
                                         std::filesystem::perms::owner_read);
        panel.startInPlace();
        EXPECT_EQ(panel.read(buzzerSettingsPath),
                  written < 0 && !readOnly ? buzzerSettings(true, static_cast<int>(frequency)) : content);
        EXPECT_EQ(panel.clicksOf(leftPress), Words{frequency}) << model << ' ' << written;
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.errors(), Lines{}) << "also when the file cannot be written";
    }
}

TEST(Buzzer, NeedsNoTagStoreAndAsksItAgain) {
    for (const bool present : {false, true}) {
        BuzzerPanel panel(buzzerSettings(false, -5));
        const panel::Devices devices = panel.panel().devices();
        devices.setTag(18, "\x02\x04");
        devices.setPresent("tags", present);
        devices.setBehaviour("tags", {Behaviour::Kind::code, 7}, "TAG_Get_Data"); // which answers yes all the same
        panel.startInPlace();
        EXPECT_EQ(panel.read(buzzerSettingsPath), buzzerSettings(false, 2400));
        devices.setPresent("tags", true);
        devices.setBehaviour("tags", {});
        EXPECT_EQ(panel.reload(buzzerSettings(true, -5)), 0);
        EXPECT_EQ(panel.read(buzzerSettingsPath), buzzerSettings(true, 3400));
        EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(Buzzer, IsOffWithoutSettings) {
    BuzzerPanel panel("");
    std::filesystem::remove(panel.panel().hostPath(buzzerSettingsPath));
    panel.startInPlace();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.tell(1), 2);
    for (const char* content : {
             "<TouchBuzzer><Settings><Frequency>7</Frequency></Settings></TouchBuzzer>",
             "<TouchBuzzer><Settings><Enabled>yes</Enabled><Frequency>7</Frequency></Settings></TouchBuzzer>",
             "<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>high</Frequency></Settings></TouchBuzzer>",
             "<ScreenSaver><Settings><Enabled>1</Enabled><Frequency>7</Frequency></Settings></ScreenSaver>",
         }) {
        EXPECT_EQ(panel.reload(content), 2) << content;
        EXPECT_EQ(panel.clicksOf(leftPress), Words{}) << content;
    }
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines(6, "ERROR;BuzzerModule;settings error"));
}

TEST(Buzzer, StaysSilentWithoutItsDriver) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.panel().devices().setPresent("BZR1", false);
    panel.driver().setTracing(true);
    panel.startInPlace();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    panel.panel().devices().setPresent("BZR1", true);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{}) << "too late";
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.calls("CallNextHookEx").size(), 2U) << "the touches were heard";
    EXPECT_EQ(panel.calls("DeviceIoControl").size(), 1U) << "of the eMMC's counter alone";
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, StaysSilentWhenTheHookIsRefused) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.failCall("SetWindowsHookExW");
    panel.driver().setTracing(true);
    panel.startInPlace();
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.tell(1), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{}) << "it is not asked for again";
    EXPECT_EQ(panel.reload(buzzerSettings(false, 3400)), 0);
    EXPECT_EQ(panel.reload(buzzerSettings(true, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{3400});
    EXPECT_EQ(panel.calls("CreateThread").size(), 3U) << "of the statistics, the disks and the second hook";
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(Buzzer, KeepsAHookThatThePlatformDoesNotRemove) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.failCall("UnhookWindowsHookEx");
    panel.startInPlace();
    const std::uint32_t threads = panel.threads();
    EXPECT_EQ(panel.reload(buzzerSettings(false, 3400)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{});
    EXPECT_EQ(panel.reload(buzzerSettings(true, 1000)), 0);
    EXPECT_EQ(panel.clicksOf(leftPress), Words{1000});
    EXPECT_EQ(panel.threads(), threads);
    EXPECT_EQ(panel.reload(buzzerSettings(false, 1000)), 0);
    EXPECT_EQ(panel.driver().status().hook, "");
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(Buzzer, WithoutItsEventsThereIsNoHelper) {
    BuzzerPanel panel(buzzerSettings(true, 3400));
    panel.startInPlace();
    const Lines log = panel.log();
    panel.driver().addFault({"CreateEventW", "TarvexHelper.exe", 2, 1, 1});
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 0U) << "a second instance ends as always";
    EXPECT_EQ(panel.log(), log);
    EXPECT_EQ(panel.terminate(), 0U);
    for (const std::uint32_t call : {1U, 2U}) {
        const std::size_t lines = panel.log().size();
        panel.driver().addFault({"CreateEventW", "TarvexHelper.exe", call + 2, 1, call});
        panel.driver().setTracing(true);
        EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
        std::string event; // the other one
        for (const TracedCall& each : panel.calls()) {
            if (each.process != call + 2)
                continue;
            if (each.function == "CreateEventW" && !each.failed)
                event = each.result;
            else if (each.function == "CloseHandle" && each.arguments == event)
                event = "closed";
        }
        EXPECT_EQ(event, "closed");
        EXPECT_EQ(panel.log().size(), lines + 2);
        EXPECT_EQ(panel.lastLines(2),
                  (Lines{"INFO;Init of Helper",
                         "ERROR;Exception OrvaUtils::Exception: Cannot create events for mouse hook"}));
    }
    panel.startInPlace();
    EXPECT_EQ(panel.terminate(), 0U);
}
