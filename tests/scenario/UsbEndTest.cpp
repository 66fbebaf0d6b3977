// The watch over disks while it is busy, at its end, and without what it needs of the platform.
#include "tests/scenario/UsbPanel.h"

TEST_F(UsbConfiguration, NoticesNothingElseWhileAProgramRuns) {
    startHelper();
    plug(document(command("sleep 60000 exit 1", true)));
    pass(1000);
    plug(document(command("exit 2", true)), 0, "Hard Disk2");
    unplug("Hard Disk");
    plug(document(command("exit 3", true)), 0, "USB Disk");
    pass(59499);
    EXPECT_EQ(ended(), Lines{});
    pass(1);
    pass(1000);
    EXPECT_EQ(ended(), (Lines{"Actor.exe#1 at 60500: 1", "Actor.exe#2 at 61000: 2", "Actor.exe#3 at 61500: 3"}));
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST_F(UsbConfiguration, OpensADiskTwiceThatHasTheNameOfOneThatIsGone) {
    startHelper();
    plug(document(command("sleep 10000", true)));
    pass(1000);
    EXPECT_EQ(plug(document(command("exit 2", true)), 0, "Hard Disk2"), "DSK2:");
    unplug("DSK2:");
    EXPECT_EQ(plug(document(command("exit 3", true)), 0, "Hard Disk3"), "DSK2:");
    pass(11000);
    EXPECT_EQ(ended(), (Lines{"Actor.exe#1 at 10500: 0", "Actor.exe#2 at 11000: 3", "Actor.exe#3 at 11500: 3"}));
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST_F(UsbConfiguration, EndsCleanlyWithAProgramThatEndsInTime) {
    startHelper();
    plug(document(command("sleep 15000", true) + command("exit 2", true)));
    pass(1000);
    EXPECT_EQ(endHelper(panel), 0U);
    EXPECT_EQ(panel.driver().status().time, 15500U);
    EXPECT_EQ(ended().size(), 2U) << "the rest of the file, too";
    EXPECT_EQ(panel.lastLines(1), Lines{"INFO;Helper terminated"});
    EXPECT_EQ(panel.errors(), Lines{});
}

// The applier has gone when the monitor's thread finds a volume.
TEST_F(UsbConfiguration, CarriesOutNothingThatIsFoundAfterItsEnd) {
    startHelper();
    plug(document(command("exit 2", true)), 10000);
    pass(1000);
    EXPECT_EQ(endHelper(panel), 0U);
    EXPECT_EQ(panel.driver().status().time, 10000U);
    EXPECT_EQ(ended(), Lines{});
    EXPECT_EQ(panel.errors(), Lines{});
}

// What has come before it, though nobody is notified any more.
TEST_F(UsbConfiguration, HearsOfItsEndAfterAllDisksThatHaveCome) {
    for (const bool gone : {false, true}) {
        ScenarioPanel another;
        setUp(another);
        another.startInPlace();
        another.panel().plug({{partition("Hard Disk", document(command("sleep 10000", true)))}});
        another.driver().advance(1000);
        for (const char* volume : {"Hard Disk2", "Hard Disk3"})
            another.panel().plug({{partition(volume, document(command("exit 2", true)))}});
        if (gone)
            another.panel().disks().unplug("Hard Disk2");
        EXPECT_EQ(endHelper(another), gone ? 1U : 0U);
        EXPECT_EQ(another.driver().status().time, gone ? 21000U : 11500U);
        EXPECT_EQ(another.driver().status().ended.size(), 2U); // the helper, and the one program
        EXPECT_EQ(another.errors(),
                  gone ? Lines{"ERROR;Exception UsbDeviceException: Failed to terminate monitor thread"} : Lines{});
    }
}

// Not for the sanitizers, which report the use. What crashes is that the C library overwrites a freed object.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(UsbConfiguration, UsesAnObjectThatIsGoneIfItGoesOnWhileTheProcessExits) {
    std::uint32_t closing = 0; // of the log: the last call of the main thread
    for (const bool held : {false, true}) {
        ScenarioPanel another;
        setUp(another);
        another.driver().setTracing(true);
        if (held)
            another.driver().addFault(
                {"CloseHandle", "TarvexHelper.exe", 1, 1, closing, false, panel::FaultAction::hold});
        another.startInPlace();
        another.panel().plug(
            {{partition("Hard Disk", document(command("sleep 25000", true) + command("exit 2", true)))}});
        another.driver().advance(1000);
        EXPECT_EQ(endHelper(another), held ? 0xC0000005 : 1U);
        EXPECT_EQ(another.driver().status().time, held ? 25500U : 21000U);
        for (const TracedCall& call : another.calls("CloseHandle"))
            if (call.thread == 1)
                closing = call.number;
        fs::remove(another.panel().directory() / "run/output/TarvexHelper.exe#1"); // an emulator tells of the crash
    }
}
#endif

TEST_F(UsbConfiguration, LivesOnWithoutItsThread) {
    struct {
        const char* function;
        std::uint32_t call;
        std::optional<std::int64_t> answer;
        Lines lines;
    } const cases[] = {
        {"CreateMsgQueue", 1, -1, {"ERROR;Generic Exception"}},
        {"RequestDeviceNotifications", 1, -1, {"ERROR;Request device notifications failed"}},
        {"RequestDeviceNotifications", 1, {}, {}}, // null is deliberately taken for a success: nothing ever comes
        {"LoadLibraryW", 1, {}, {"ERROR;Load coredll.dll failed"}},
        {"GetProcAddressW", 19, {}, {"ERROR;Get address of FindFirstPartition failed"}},
    };
    panel.driver().setTracing(true);
    startHelper();
    const std::uint32_t watcher = panel.calls("CreateMsgQueue").at(0).thread;
    for (const auto& each : cases) {
        SCOPED_TRACE(each.function);
        ScenarioPanel another;
        setUp(another);
        another.panel().plug({{partition("Hard Disk", document(command("exit 1", true)))}});
        panel::Fault fault{each.function, "TarvexHelper.exe", 1, watcher, each.call};
        fault.answer = each.answer;
        another.driver().addFault(fault);
        another.startInPlace();
        another.driver().advance(1000);
        EXPECT_EQ(another.driver().faults().at(0).hits, 1U);
        EXPECT_EQ(another.errors(), each.lines);
        EXPECT_EQ(another.command(7), 1);
        EXPECT_EQ(another.terminate(), 0U);
        EXPECT_EQ(another.errors(), each.lines);
    }
}

// Null is deliberately taken for a queue. No wait for it succeeds, so the thread asks again and again and hears
// nothing, not even that it is to end; as it never waits, time must flow.
TEST_F(UsbConfiguration, SpinsOnAQueueThatIsNull) {
    ScenarioPanel flowing(0, 20);
    setUp(flowing);
    flowing.driver().addFault({"CreateMsgQueue", "TarvexHelper.exe"});
    flowing.startInPlace();
    EXPECT_EQ(flowing.errors(), Lines{});
    EXPECT_EQ(endHelper(flowing), 1U);
    EXPECT_EQ(flowing.errors(), Lines{"ERROR;Exception UsbDeviceException: Failed to terminate monitor thread"});
}
