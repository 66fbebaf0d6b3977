// Disks that come and go while a helper runs, and what their "Tarvex.xml" makes it do.
#include "tests/scenario/UsbPanel.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/StatisticsFile.h"

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
        {"<Tarvex><Commands>" + good + "</Tarvex>", "Generic Exception"},
        {document(good + "<Command Type='Copy'/>"), "Invalid command type"},
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

// The panel executable's heap has 8 MB: what does not fit there is unreadable, and nothing else.
TEST_F(UsbConfiguration, AFileThatDoesNotFitIntoMemoryIsUnreadable) {
    const bool fits = helperFile().extension() != ".exe";
    const auto write = [&](std::size_t megabytes) {
        const std::string blanks(megabytes << 20, ' ');
        panel.write(statisticsPath, blanks + statisticsFile(1, 2, 1000, 4));
        panel.write(buzzerSettingsPath, blanks +
                                            "<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>3400</Frequency>"
                                            "</Settings></TouchBuzzer>");
    };
    for (const std::size_t megabytes : {3U, 6U}) {
        write(megabytes);
        startHelper();
        EXPECT_EQ(panel.errors(), Lines{}) << megabytes;
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.read(statisticsPath), statisticsFile(0, 0, 1000, 4)) << megabytes;
    }
    write(9);
    startHelper();
    EXPECT_EQ(panel.errors(), fits ? Lines{} : Lines{"ERROR;BuzzerModule;settings error"});
    std::string crowd; // more than its text takes room
    for (int each = 0; each < 300000; ++each)
        crowd += "<a/>";
    plug("<Tarvex>" + crowd + "<Commands>" + command("exit 1", true) + "</Commands></Tarvex>");
    pass(500);
    plug(document(command("exit 2", true)), 0, "USB Disk");
    pass(500);
    EXPECT_EQ(ended().size(), fits ? 2U : 1U) << "the next disk";
    EXPECT_EQ(logged(), fits ? Lines{} : Lines{"ERROR;XML configuration;error;Generic Exception"});
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(0, 0, fits ? 1000 : 0, fits ? 4 : 0));
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST_F(UsbConfiguration, LooksAtDisksOnly) {
    startHelper();
    const std::string document2 = document(command("exit 2", true));
    panel.panel().plug({{partition("Storage Card", document2), partition("hard disk", document2),
                         partition("My USB Disk", document2), partition("Hard Disk2", document2)}});
    fs::create_directory(disks.path / "Tarvex.xml");
    panel.panel().plug({{{disks.path, "USB Disk"}}}); // without a file of that name in its root
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
    Lines expected{"Actor.exe#1 at 500: 1", "Actor.exe#2 at 500: 3"};
    EXPECT_EQ(ended(), expected);
    unplug("Hard Disk");
    pass(1000);
    EXPECT_EQ(ended(), expected) << "a disk that goes starts nothing";
    plug(document(command("exit 4", true)));
    pass(1000);
    expected.push_back("Actor.exe#3 at 2000: 4");
    EXPECT_EQ(ended(), expected) << "a disk that comes again is read again";
}

TEST_F(UsbConfiguration, AsksThePlatformInThisOrder) {
    panel.driver().setTracing(true);
    startHelper();
    panel.panel().plug({{{disks.path, "Hard Disk"}, {disks.path, "Hard Disk2"}}, 600});
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
    Lines looked;
    for (const TracedCall& call : panel.calls("GetProcAddressW"))
        if (call.arguments.find("TAG_") == std::string::npos)
            looked.push_back(call.firstText());
    EXPECT_EQ(looked, (Lines{"OpenStore",          "DismountStore",     "FormatStore",
                             "FindFirstStore",     "FindNextStore",     "FindCloseStore",
                             "GetStoreInfo",       "CreatePartition",   "CreatePartitionEx",
                             "DeletePartition",    "OpenPartition",     "MountPartition",
                             "DismountPartition",  "RenamePartition",   "SetPartitionAttributes",
                             "GetPartitionInfo",   "FormatPartition",   "FormatPartitionEx",
                             "FindFirstPartition", "FindNextPartition", "FindClosePartition"}));
}

TEST_F(UsbConfiguration, WaitsForASlowDiskAndGivesUpOnOneThatNeverOpens) {
    startHelper();
    panel.driver().setTracing(true);
    plug(document(command("exit 1", true)), 30000);
    pass(29999);
    EXPECT_EQ(ended(), Lines{});
    pass(1);
    Lines expected{"Actor.exe#1 at 30000: 1"};
    EXPECT_EQ(ended(), expected);
    EXPECT_EQ(calls("OpenStore(\"DSK1:\")").size(), 60U);

    panel.panel().plug({{}, panel::never}); // at 30000
    panel.panel().plug({{}}); // no partition
    plug(document(command("exit 2", true)), 0, "Hard Disk2");
    unplug("DSK1:"); // told of last
    pass(300000);
    EXPECT_EQ(calls("OpenStore(\"DSK2:\")").size(), 600U);
    EXPECT_EQ(ended(), expected);
    pass(1000);
    expected.push_back("Actor.exe#2 at 331000: 2");
    EXPECT_EQ(ended(), expected);
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
