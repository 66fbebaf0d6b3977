// Disks that come and go while a helper runs, and what their "Tarvex.xml" makes it do.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

std::string command(const std::string& words, bool wait, const std::string& path = "\\Temp\\Actor.exe") {
    return "<Command Type='RunProcess' FilePath='" + path + "' Arguments='" + words + "' WaitCompletion='" +
           (wait ? "1" : "0") + "'/>";
}

std::string document(const std::string& commands) {
    return "<?xml version='1.0' encoding='UTF-8'?>\n<Tarvex><Commands>" + commands + "</Commands></Tarvex>\n";
}

// "      1000 TarvexHelper.exe#1 t2 Sleep[1](500) = void after 500 ms" -> "Sleep(500) = void after 500 ms"
std::string callOf(const std::string& line) {
    const auto open = line.find('[');
    const auto name = line.rfind(' ', open) + 1;
    return line.substr(name, open - name) + line.substr(line.find(']') + 1);
}

// " t2 ": the helper's thread that hears of devices, by a call that only it makes
std::string watcherIn(const Lines& trace, const std::string& call) {
    for (const std::string& line : trace) {
        const auto name = line.find(" " + call + "[");
        if (name != std::string::npos)
            return line.substr(line.rfind(" t", name), name - line.rfind(" t", name) + 1);
    }
    return "none";
}

std::string resultOf(const std::string& call) {
    return call.substr(call.rfind("= ") + 2);
}

} // namespace

class UsbConfiguration : public testing::Test {
protected:
    UsbConfiguration() {
        std::string name = (fs::temp_directory_path() / "disk-XXXXXX").string();
        folder = mkdtemp(name.data());
        setUp(panel);
    }
    ~UsbConfiguration() override {
        fs::remove_all(folder);
    }

    static void setUp(ScenarioPanel& any) {
        any.install();
        any.put("\\Temp\\Actor.exe", programFile("Actor"));
    }

    panel::Partition partition(const std::string& volume, const std::string& content) const {
        const fs::path place = folder / volume;
        fs::create_directories(place);
        std::ofstream(place / "Tarvex.xml") << content;
        return {place, volume};
    }
    // A disk with one mounted partition whose "Tarvex.xml" has this content; its device.
    std::string plug(const std::string& content, std::uint64_t readyAfter = 0,
                     const std::string& volume = "Hard Disk") {
        return panel.panel().plug({{partition(volume, content)}, readyAfter});
    }
    void unplug(const std::string& name) {
        panel.panel().disks().unplug(name);
    }

    void startHelper() {
        panel.driver().start(ScenarioPanel::helper);
        ASSERT_TRUE(panel.reachesLoop());
        settledLines = panel.log().size();
    }
    void pass(std::uint64_t milliseconds) {
        panel.driver().advance(milliseconds);
        panel.driver().settle();
    }
    // Command 1, and the wait for the helper alone; its exit code.
    std::uint32_t endHelper(ScenarioPanel& any) {
        EXPECT_EQ(any.command(1), 0);
        const auto gone = [&] { return !any.isRunning("TarvexHelper.exe#1"); };
        EXPECT_TRUE(any.driver().waitUntil(gone, ScenarioPanel::limit));
        return any.exitCodeOf("TarvexHelper.exe#1");
    }
    // What the helper has logged since it reached its loop.
    Lines logged() const {
        Lines lines = panel.log();
        return {lines.begin() + static_cast<std::ptrdiff_t>(settledLines), lines.end()};
    }
    // The programs that have ended: "Actor.exe#1 at 2500: 3".
    Lines ended() {
        Lines lines;
        for (const panel::EndedStatus& each : panel.driver().status().ended)
            if (each.name.find("Actor") == 0)
                lines.push_back(each.name + " at " + std::to_string(each.time) + ": " + std::to_string(each.exitCode));
        return lines;
    }
    Lines calls(const std::string& start = {}) {
        const Lines trace = panel.trace();
        const std::string watcher = watcherIn(trace, "ReadMsgQueue");
        Lines lines;
        for (const std::string& line : trace)
            if (line.find(watcher) != std::string::npos && callOf(line).find(start) == 0)
                lines.push_back(callOf(line));
        return lines;
    }

    ScenarioPanel panel;
    fs::path folder;
    std::size_t settledLines = 0;
};

TEST_F(UsbConfiguration, StartsProgramsInOrderWaitingWhereItIsTold) {
    startHelper();
    panel.driver().setTracing(true);
    plug(document(command("sleep 2000 exit 3", true) + command("sleep 5000 exit 4", false) + command("", true) +
                  command("exit 5", true) + command("\\Temp\\Actor.exe exit 6", true, "")));
    pass(10000);
    EXPECT_EQ(ended(), (Lines{"Actor.exe#1 at 2500: 3", "Actor.exe#3 at 2500: 0", "Actor.exe#4 at 2500: 5",
                              "Actor.exe#5 at 2500: 6", "Actor.exe#2 at 7500: 4"}));
    const Lines starts = calls("CreateProcessW");
    ASSERT_EQ(starts.size(), 5U);
    EXPECT_NE(starts[0].find("(\"\\Temp\\Actor.exe\", \"sleep 2000 exit 3\")"), std::string::npos) << starts[0];
    EXPECT_NE(starts[2].find("(\"\\Temp\\Actor.exe\", null)"), std::string::npos) << starts[2];
    EXPECT_NE(starts[4].find("(null, \"\\Temp\\Actor.exe exit 6\")"), std::string::npos) << starts[4];
    EXPECT_EQ(logged(), Lines{});
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST_F(UsbConfiguration, AProgramThatDoesNotStartStopsNothing) {
    panel.driver().setTracing(true);
    startHelper();
    plug(document(command("", true, "\\Temp\\missing.exe") + command("", false, "\\Temp") + command("exit 3", true)));
    pass(500);
    EXPECT_EQ(ended(), Lines{"Actor.exe#1 at 500: 3"});
    EXPECT_EQ(calls("WaitForSingleObject(null"), Lines{"WaitForSingleObject(null, 4294967295) = 4294967295 error 6"});
    EXPECT_EQ(logged(), Lines{});
}

TEST_F(UsbConfiguration, AFaultyFileStartsNothingAndIsOneLine) {
    const std::string good = command("exit 1", true);
    const std::pair<std::string, const char*> cases[] = {
        {"", "Generic Exception"},
        {"<Tarvex><Commands>" + good + "</Tarvex>", "Generic Exception"},
        {"<Other><Commands>" + good + "</Commands></Other>", "Invalid root element"},
        {document(good + "<Run/>"), "Expected command"},
        {document(good + "<Command Type='Copy'/>"), "Invalid command type"},
        {document(good + "<Command Type='RunProcess' FilePath='a' Arguments=''/>"), "Generic Exception"},
        {document(good + command("", true).replace(command("", true).rfind('1'), 1, "yes")),
         "Invalid WaitCompletion attribute"},
        {"<Tarvex><Commands>" + good + "</Commands><Users><User Username='a'/></Users></Tarvex>", "Generic Exception"},
        {"<Tarvex><Commands>" + good + "</Commands><Login/></Tarvex>", "Generic Exception"},
    };
    startHelper();
    Lines expected;
    for (const auto& [content, failure] : cases) {
        const std::string device = plug(content);
        pass(500);
        expected.push_back(std::string("ERROR;XML configuration;error;") + failure);
        EXPECT_EQ(logged(), expected) << content;
        unplug(device);
        pass(0);
    }
    EXPECT_EQ(ended(), Lines{});
    plug(document(command("exit 2", true)));
    pass(500);
    EXPECT_EQ(ended().size(), 1U);
    EXPECT_EQ(logged(), expected);
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST_F(UsbConfiguration, LooksAtDisksOnly) {
    startHelper();
    const std::string document2 = document(command("exit 2", true));
    panel.panel().plug({{partition("Storage Card", document2), partition("hard disk", document2),
                         partition("My USB Disk", document2), partition("Hard Disk2", document2)}});
    panel.panel().plug({{{folder, "USB Disk"}}}); // without a file in its root
    pass(1000);
    EXPECT_EQ(ended(), (Lines{"Actor.exe#1 at 500: 2", "Actor.exe#2 at 500: 2"}));
    EXPECT_EQ(logged(), Lines{});
}

TEST_F(UsbConfiguration, FindsEachMountedPartitionAlsoOfADiskThatWasThere) {
    panel::Partition unmounted = partition("Hard Disk2", document(command("exit 2", true)));
    unmounted.attributes = 0x1;
    panel.panel().plug({{partition("Hard Disk", document(command("exit 1", true))), unmounted,
                         partition("Hard Disk3", document(command("exit 3", true)))}});
    startHelper();
    pass(499);
    EXPECT_EQ(ended(), Lines{});
    pass(1);
    EXPECT_EQ(ended(), (Lines{"Actor.exe#1 at 500: 1", "Actor.exe#2 at 500: 3"}));
    unplug("Hard Disk");
    pass(1000);
    EXPECT_EQ(ended().size(), 2U) << "a disk that goes starts nothing";
    plug(document(command("exit 4", true)));
    pass(1000);
    EXPECT_EQ(ended().back(), "Actor.exe#3 at 2000: 4") << "a disk that comes again is read again";
}

TEST_F(UsbConfiguration, FindsADiskThatThePanelBootsWith) {
    plug(document(command("exit 3", true)), 2000);
    panel.reboot(); // from which its delay counts
    startHelper();
    pass(1999);
    EXPECT_EQ(ended(), Lines{});
    pass(1);
    EXPECT_EQ(ended(), Lines{"Actor.exe#1 at 2000: 3"});
}

TEST_F(UsbConfiguration, AsksThePlatformInThisOrder) {
    panel.driver().setTracing(true);
    startHelper();
    panel.panel().plug({{{folder, "Hard Disk"}, {folder, "Hard Disk2"}}, 600});
    pass(1000);
    unplug("Hard Disk");
    EXPECT_EQ(panel.terminate(), 0U);
    Lines functions; // with their arguments
    for (const std::string& line : calls())
        if (line.find("GetProcAddressW") != 0)
            functions.push_back(line);
    const Lines expected = {
        "CreateMsgQueue(null, 20, 0, 0, 160, 1) = ",
        "RequestDeviceNotifications({da ed e7 a4 75 e5 52 42 9d 6b 41 95 d4 8b b8 65}, ",
        "EventModify(",
        "WaitForMultipleObjects(2, ",
        "ReadMsgQueue(",
        "Sleep(500) = void after 500 ms",
        "LoadLibraryW(\"coredll.dll\") = ",
        "OpenStore(\"DSK1:\") = -1 error 21",
        "Sleep(500) = void after 500 ms",
        "OpenStore(\"DSK1:\") = 0x",
        "FindFirstPartition(",
        "GetFileAttributesW(\"\\Hard Disk\\Tarvex.xml\") = 4294967295 error 2",
        "FindNextPartition(",
        "GetFileAttributesW(\"\\Hard Disk2\\Tarvex.xml\") = 4294967295 error 2",
        "FindNextPartition(",
        "FindClosePartition(",
        "CloseHandle(",
        "WaitForMultipleObjects(2, ",
        "ReadMsgQueue(",
        "WaitForMultipleObjects(2, ",
        "StopDeviceNotifications(",
        "CloseMsgQueue(",
    };
    ASSERT_EQ(functions.size(), expected.size()) << testing::PrintToString(functions);
    for (std::size_t index = 0; index < expected.size(); ++index)
        EXPECT_EQ(functions[index].find(expected[index]), 0U) << index << ": " << functions[index];
    const std::string store = resultOf(functions[9]);
    const std::string search = resultOf(functions[10]);
    EXPECT_EQ(functions[10], "FindFirstPartition(" + store + ", 296) = " + search);
    EXPECT_EQ(functions[12], "FindNextPartition(" + search + ", 296) = 1");
    EXPECT_EQ(functions[14], "FindNextPartition(" + search + ", 296) = 0 error 18");
    EXPECT_EQ(functions[15], "FindClosePartition(" + search + ") = 1");
    EXPECT_EQ(functions[16], "CloseHandle(" + store + ") = 1");
    EXPECT_NE(functions[18].find(", 160, 0, {"), std::string::npos) << functions[18];
    const Lines looked = calls("GetProcAddressW");
    ASSERT_EQ(looked.size(), 21U);
    EXPECT_NE(looked[0].find("\"OpenStore\""), std::string::npos);
    EXPECT_NE(looked[14].find("\"SetPartitionAttributes\""), std::string::npos);
    EXPECT_NE(looked[20].find("\"FindClosePartition\""), std::string::npos);
}

TEST_F(UsbConfiguration, WaitsForASlowDiskAndGivesUpOnOneThatNeverOpens) {
    startHelper();
    panel.driver().setTracing(true);
    plug(document(command("exit 1", true)), 30000);
    pass(29999);
    EXPECT_EQ(ended(), Lines{});
    pass(1);
    EXPECT_EQ(ended(), Lines{"Actor.exe#1 at 30000: 1"});
    EXPECT_EQ(calls("OpenStore(\"DSK1:\")").size(), 60U);

    panel.panel().plug({{}, panel::never}); // at 30000
    panel.panel().plug({{}}); // no partition
    plug(document(command("exit 2", true)), 0, "Hard Disk2");
    unplug("DSK1:"); // told of last
    pass(300000);
    EXPECT_EQ(calls("OpenStore(\"DSK2:\")").size(), 600U);
    EXPECT_EQ(ended().size(), 1U);
    pass(1000);
    EXPECT_EQ(ended().back(), "Actor.exe#2 at 331000: 2");
    EXPECT_EQ(calls("OpenStore(\"DSK3:\")").size(), 1U);
    EXPECT_EQ(calls("FindFirstPartition(").size(), 122U) << "one for each of the two good disks";
    const Lines opened = calls("OpenStore(");
    ASSERT_EQ(opened.size(), 60 + 600 + 1 + 1U);
    for (const std::size_t index : {59U, 660U, 661U})
        EXPECT_EQ(calls("CloseHandle(" + resultOf(opened[index]) + ") = 1").size(), 1U) << opened[index];
    EXPECT_EQ(calls("ReadMsgQueue(").size(), 5U);
    EXPECT_EQ(logged(), Lines{});
    EXPECT_EQ(panel.terminate(), 0U);
}

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

TEST_F(UsbConfiguration, EndsCleanlyWithAProgramThatEndsInTime) {
    startHelper();
    plug(document(command("sleep 15000", true) + command("exit 2", true)));
    pass(1000);
    EXPECT_EQ(endHelper(panel), 0U);
    EXPECT_EQ(panel.driver().status().time, 15500U);
    EXPECT_EQ(ended().size(), 2U) << "the rest of the file, too";
    EXPECT_EQ(logged().back(), "INFO;Helper terminated");
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

    ScenarioPanel another;
    setUp(another);
    another.driver().start(ScenarioPanel::helper);
    ASSERT_TRUE(another.reachesLoop());
    another.panel().plug({{partition("Hard Disk2", document(command("sleep 5000", true))),
                           partition("Hard Disk3", document(command("exit 2", true)))}});
    another.driver().advance(1000);
    EXPECT_EQ(endHelper(another), 0U);
    EXPECT_EQ(another.driver().status().time, 5500U);
    EXPECT_FALSE(another.isRunning("Actor.exe#1"));
    EXPECT_EQ(another.driver().status().ended.size(), 2U); // the helper, and the one program
    EXPECT_EQ(another.errors(), Lines{});
}

TEST_F(UsbConfiguration, FailsToEndWhileItsThreadIsBusy) {
    for (const bool opening : {false, true}) {
        ScenarioPanel another;
        setUp(another);
        another.driver().start(ScenarioPanel::helper);
        ASSERT_TRUE(another.reachesLoop());
        const panel::Partition endless = partition("Hard Disk", document(command("sleep 3600000", true)));
        another.panel().plug({{endless}, opening ? panel::never : 0});
        another.driver().advance(1000);
        EXPECT_EQ(endHelper(another), 1U);
        EXPECT_EQ(another.driver().status().time, 21000U);
        const Lines lines = another.log();
        ASSERT_GT(lines.size(), 3U);
        EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
                  (Lines{"INFO;Module manager terminated",
                         "ERROR;Exception UsbDeviceException: Failed to terminate monitor thread",
                         "INFO;Helper terminated"}));
        EXPECT_EQ(another.isRunning("Actor.exe#1"), !opening) << "what it started goes on";
    }
}

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
    const std::string watcher = watcherIn(panel.trace(), "CreateMsgQueue");
    for (const auto& each : cases) {
        SCOPED_TRACE(each.function);
        ScenarioPanel another;
        setUp(another);
        another.panel().plug({{partition("Hard Disk", document(command("exit 1", true)))}});
        panel::Fault fault;
        fault.function = each.function;
        fault.program = "TarvexHelper.exe";
        fault.thread = static_cast<std::uint32_t>(std::stoul(watcher.substr(2)));
        fault.call = each.call;
        fault.answer = each.answer;
        another.driver().addFault(fault);
        another.driver().start(ScenarioPanel::helper);
        ASSERT_TRUE(another.reachesLoop());
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
    panel::Fault fault;
    fault.function = "CreateMsgQueue";
    flowing.driver().addFault(fault);
    flowing.driver().start(ScenarioPanel::helper);
    ASSERT_TRUE(flowing.reachesLoop());
    EXPECT_EQ(flowing.errors(), Lines{});
    EXPECT_EQ(endHelper(flowing), 1U);
    EXPECT_EQ(flowing.errors(), Lines{"ERROR;Exception UsbDeviceException: Failed to terminate monitor thread"});
}
