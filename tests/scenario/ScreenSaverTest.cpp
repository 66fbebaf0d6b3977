// The screen saver, as the operator sees it: what it asks of the backlight, and what covers the screen.
#include "platform/panel/Operator.h"
#include "tests/scenario/SavingPanel.h"

#include <algorithm>

TEST(ScreenSaver, DimsAfterTheTimeoutAndRestoresInOrder) {
    const struct {
        int level;
        std::uint32_t dimmed;
        const char* written;
        bool black;
    } cases[] = {{0, 0, "00", true}, {1, 0, "00", false}, {128, 127, "7f", false}, {255, 254, "fe", false}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.level);
        SavingPanel panel(true, 60000, each.level);
        panel.panel().devices().setValues("BKL1", {90, 1, 91, 1}); // the user's own choice, made while it is bright
        panel.driver().setTracing(true);
        panel.user(false);
        panel.pass(59999);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.blackWindow(), "hidden");
        panel.pass(1);
        EXPECT_EQ(panel.levels(), dimmedTo(each.dimmed));
        EXPECT_EQ(panel.blackWindow(), each.black ? "black" : "hidden");
        EXPECT_EQ(panel.cursor(), each.black ? -1 : 0);
        const auto dimming = panel.panel().devices().requests("BKL1").at(2); // behind two looks
        EXPECT_EQ(dimming.time, 60000U);
        EXPECT_EQ(dimming.thread, 3U);
        panel.pass(3600000);
        panel.user(true);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.blackWindow(), "hidden");
        EXPECT_EQ(panel.cursor(), each.black ? 0 : 1);
        const auto signals = panel.driver().status().signals;
        EXPECT_TRUE(std::any_of(signals.begin(), signals.end(), [](const panel::SignalStatus& signal) {
            return signal.event == "BackLightLevelChangeEvent" && signal.count == 2;
        }));
        const Lines show = each.black ? Lines{"post 0x401"} : Lines{};
        EXPECT_EQ(
            panel.steps(3),
            joined(
                {show, {"read", std::string("write ") + each.written}, changed, {"post 0x402", "write 5a"}, changed}));
        const Lines shown = each.black ? Lines{"cursor 0", "window 5"} : Lines{};
        EXPECT_EQ(panel.steps(1), joined({shown, {"cursor 1", "window 0"}})) << "hides what it has not shown, too";
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(ScreenSaver, LosesCountOfTheCursorWithoutABlackScreen) {
    SavingPanel panel(true, 5000, 32);
    for (int round = 0; round < 3; ++round) {
        panel.user(false);
        panel.pass(5000);
        panel.user(true);
    }
    EXPECT_EQ(panel.cursor(), 3);
    EXPECT_EQ(panel.tell(4, 0), 0);
    panel.user(false);
    panel.pass(5000);
    EXPECT_EQ(panel.blackWindow(), "black");
    EXPECT_EQ(panel.cursor(), 2); // shown, over the black
    EXPECT_EQ(panel.tell(2, 0), 0);
    panel.driver().settle();
    EXPECT_EQ(panel.cursor(), 4);
}

TEST(ScreenSaver, WaitsAMinuteTheFirstTimeForAUserWhoIsInactiveAlready) {
    SavingPanel panel;
    panel.configure(true, 5000, 32);
    panel.user(false);
    panel.startInPlace();
    panel.pass(59999);
    EXPECT_EQ(panel.levels(), usersLevels);
    panel.pass(1);
    EXPECT_EQ(panel.levels(), dimmedTo(31));
    panel.user(true);
    panel.user(false);
    panel.pass(5000);
    EXPECT_EQ(panel.levels(), dimmedTo(31));
}

TEST(ScreenSaver, WakesByATouchThatLandsOnWhatIsVisible) {
    for (const int level : {0, 32}) {
        SavingPanel panel(true, 5000, level);
        EXPECT_EQ(panel::touch({}).window, "");
        panel.user(false);
        panel.pass(5000);
        const panel::Landing landing = panel::touch({});
        panel.driver().settle();
        EXPECT_EQ(landing.window, level == 0 ? "ORVAScreenSaver" : ""); // black: nothing else gets it
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "hidden");
        EXPECT_EQ(panel::touch({}).window, "");
        EXPECT_EQ(panel.terminate(), 0U);
    }
}

TEST(ScreenSaver, TakesValuesOfTheFileAsTheyAre) {
    SavingPanel panel(true, -1, 300); // a time-out for ever, a level above the highest
    panel.user(false);
    panel.pass(3600000);
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.tell(5, 1), 0);
    EXPECT_EQ(panel.levels(), dimmedTo(298));
    EXPECT_EQ(panel.lastLines(1), Lines{"INFO;ScreenSaverModule;message handled 5 result: 0"});
    EXPECT_EQ(panel.log().at(4),
              "INFO;ScreenSaverModule;settings loaded;timeout: 4294967295 backlight: 300 enabled: 1");
}

TEST(ScreenSaver, RestoresTheScreenAtItsEnd) {
    SavingPanel panel(true, 5000, 0);
    panel.user(false);
    panel.pass(5000);
    EXPECT_EQ(panel.blackWindow(), "black");
    panel.driver().setTracing(true);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.blackWindow(), "none");
    // Nobody serves the window any more: what is posted to it is lost, and it goes with the process. The cursor does
    // not come back.
    EXPECT_EQ(panel.cursor(), -1);
    EXPECT_EQ(panel.steps(1),
              joined({{"post 0x10"}, {"post 0x402", "write c8"}, changed, {"post 0x402", "post 0x10"}}));
    EXPECT_EQ(panel.errors(), Lines{});
}
