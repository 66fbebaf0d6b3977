// The panel executable's own test program (tests/programs/checks), one test a group. What it prints fails the test.
#include "platform/panel/Client.h"
#include "platform/panel/Operator.h"
#include "tests/support/RotatedFiles.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* program = "\\Temp\\PanelChecks.exe";
constexpr std::uint32_t ownFault = 0xC0000005; // a process that a fault of its own has ended

class PanelChecks : public ScenarioPanel {
public:
    PanelChecks() {
        put(program, PANEL_EXECUTABLES "PanelChecks.exe");
    }
};

} // namespace

TEST(PanelChecks, TextHasSixteenBitsACharacter) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "text"), 0U);
    EXPECT_NE(panel.read("\\Temp\\\xF0\x9F\x98\x80.xml").find("\xE2\x82\xAC\xF0\x9F\x98\x80"), std::string::npos);
}

TEST(PanelChecks, EveryThreadHasItsOwnExceptions) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "exceptions"), 0U);
}

TEST(PanelChecks, StaticsAreMadeWhenNeededAndDestroyedInReverse) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "statics"), 0U);
    EXPECT_EQ(panel.read("\\Temp\\diary.txt"),
              "diary made\nfile level made\nprogram\nat exit\nfile level gone\ndiary gone\n");
}

TEST(PanelChecks, HeapGrowsAndEndsInBadAlloc) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "heap"), 0U);
}

TEST(PanelChecks, TheLogLosesNoLineOfSeveralThreads) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "log"), 0U);
    rotating_log::expectAllLines(panel.panel().hostPath("\\Log"));
}

TEST(PanelChecks, TheLogWritesWholeLinesToFilesThatItUsesAgain) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "log-of-two-files"), 0U);
    EXPECT_FALSE(rotating_log::readLines(panel.panel().hostPath("\\Log")).empty());
}

TEST(PanelChecks, WindowProceduresKeepParametersAndExceptions) {
    PanelChecks panel;
    const auto process = panel.driver().start(program, "window");
    ASSERT_TRUE(panel.driver().waitUntil([] { return panel::findWindow("PanelChecks") != 0; }, PanelChecks::limit));
    const std::uint32_t window = panel::findWindow("PanelChecks");
    EXPECT_EQ(panel::sendMessage(window, "ChecksWidth", 0xFFFFFFFE, -3, PanelChecks::limit), -4);
    panel::postMessage(window, "ChecksThrow", 1, 0);
    panel.driver().settle();
    EXPECT_EQ(panel::sendMessage(window, "ChecksThrow", 2, 0, PanelChecks::limit), 0);
    panel.driver().settle();
    panel::postMessage(window, "ChecksThrow", 3, 0);
    panel.driver().settle();
    EXPECT_EQ(panel::sendMessage(window, "ChecksThrow", 4, 0, PanelChecks::limit), 0);
    panel.driver().settle();
    EXPECT_EQ(panel::sendMessage(window, "ChecksEnd", 0, 0, PanelChecks::limit), 1);
    EXPECT_EQ(panel.driver().waitForExit(process, PanelChecks::limit), 0U);
}

// On a panel there are no unwind tables behind these: the run time must notice, and end the process.
TEST(PanelChecks, AnExceptionThatReachesThePlatformEndsTheProcess) {
    PanelChecks panel;
    EXPECT_EQ(panel.run(program, "escape-main"), ownFault);
    EXPECT_EQ(panel.run(program, "escape-thread"), ownFault);
    EXPECT_EQ(panel.run(program, "escape-procedure"), ownFault);
}

// The loader begins everything that the platform calls with a stack that is aligned to 4 bytes alone.
TEST(PanelChecks, AlignsTheStackThatThePlatformGives) {
    PanelChecks panel;
    const auto process = panel.driver().start(program, "stack");
    ASSERT_TRUE(panel.driver().waitUntil([&] { return !panel.driver().status().hook.empty(); }, PanelChecks::limit));
    panel::touch({panel::Touch::Kind::move}); // for the hook's procedure
    EXPECT_EQ(panel.driver().waitForExit(process, PanelChecks::limit), 0U);
}

TEST(PanelChecks, MeetsAWriteToWhatIsNotWritable) {
    PanelChecks panel;
    for (const char* group : {"write-constant", "write-code"}) {
        EXPECT_EQ(panel.run(program, group), ownFault) << group;
        panel.driver().waitForLingering();
    }
    for (const auto& entry : std::filesystem::directory_iterator(panel.panel().directory() / "run/output"))
        std::filesystem::remove(entry); // the emulator tells of the fault
}
