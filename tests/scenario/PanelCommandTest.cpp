// The panel command, as a person or a script uses it.
#include "tests/support/PanelCommand.h"

#include <csignal>
#include <cstdlib>
#include <sys/stat.h>

constexpr const char* onTerminal = "on() { script -qec \"$*\" /dev/null; }; on"; // begins a command

TEST_F(PanelCommand, RunsTheHelperFromCreationToItsEnd) {
    succeed("create p --screen 640x480 --date 2024-03-07T06:05:09");
    install();
    succeed("boot --stepped --ticks 0xFFFFFF00");
    succeed("trace on");
    succeed("start '\\MMCMemory\\Tarvex\\TarvexHelper.exe'");
    succeed("wait --window ORVATarvexHelper");
    const Json process = json("ps").at("processes").at(0);
    EXPECT_EQ(process.at("name"), "TarvexHelper.exe#1");
    EXPECT_EQ(process.at("calls").at(0), Json({{"thread", 1}, {"since", 0}, {"call", "GetMessageW[1]()"}}));
    const std::string waiting = "         0 TarvexHelper.exe#1 t1 GetMessageW[1]() has not returned\n";
    EXPECT_EQ(call("trace show --function GetMessageW").text, waiting);
    EXPECT_NE(call("ps").text.find(waiting), std::string::npos);
    EXPECT_EQ(json("send ORVATarvexHelper ORVATarvexMsg 0").at("result"), 1);
    EXPECT_EQ(call("send -- ORVATarvexHelper ORVATarvexMsg 0 -1").text, "1\n");
    fails("send ORVATarvexHelper ORVATarvexMsgs 1", "ORVATarvexMsg; --force sends it");
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(call("send --force ORVATarvexHelper Unknown 0").text, "0\n");
        fails("send ORVATarvexHelper Unknown 0", "ORVATarvexMsg; --force");
    }
    isMisused("send ORVATarvexHelper 0x10000 0", "16 bits");
    succeed("send ORVATarvexHelper ORVATarvexMsg 1 --post");
    const Json ended = json("wait --exit TarvexHelper.exe");
    EXPECT_EQ(ended.at("exitCode"), 0);
    EXPECT_EQ(call("advance 5s").text, "5000 ms since boot, 2024-03-07 06:05:14 UTC\n"); // not the ticks
    const Answer log = call("log");
    EXPECT_EQ(log.text.find("2024-03-07 06:05:09,4294967040;INFO;Init of Helper\n"), 0U) << log.text;
    EXPECT_NE(log.text.find(";INFO;Helper terminated\n"), std::string::npos) << log.text;
    for (const std::string command : {"log ", "trace show "}) {
        for (const char* all : {"--since 2024-03-07", "--since 1m", "--before 2025-01-01T00:00:00", "--before +1s"})
            EXPECT_EQ(call(command + all).text, call(command).text) << all;
        for (const char* none : {"--since 1s", "--before 5s", "--before 2024-03-07T06:05:09", "--since +1s"})
            EXPECT_EQ(call(command + none).text, "") << none;
        for (const char* bad : {"yesterday", "''"})
            isMisused(command + "--since " + bad, "not a time");
    }
    EXPECT_EQ(call("log --level error --json")
                  .text.find(R"({"date":"2024-03-07 06:05:09","ticks":4294967040,)"
                             R"("level":"ERROR","text":"ScreenSaverModule;)"),
              0U);
    EXPECT_EQ(json("trace show --before +1ms --function ReleaseMutex --failed").at("result"), "0 error 288");
    EXPECT_NE(call("trace show --function ReleaseMutex").text.find("error 288"), std::string::npos);
    EXPECT_EQ(json("status").at("on"), true);
    succeed("advance 500ms");
    EXPECT_EQ(json("off").at("on"), false);
    EXPECT_EQ(json("status").at("on"), false);
    EXPECT_NE(call("trace show --since 6s").text, ""); // the last boot is still known
    succeed("boot --stepped --trace --fault 'Sleep --program Actor.exe --call 2 --cut'");
    succeed("start '\\MMCMemory\\Actor.exe' sleep 600000 sleep 1");
    fails("advance 20min", "switched off");
    EXPECT_EQ(json("status").at("date"), "2024-03-07 06:15:14 UTC"); // not 20 minutes after the boot
    EXPECT_EQ(call("log --since 1m").text, "");
    writeText(directory / "p/fs/MMCMemory/Tarvex/helper_log1.txt", "torn-07 06:05:0 000,1;INFO;\n");
    EXPECT_NE(call("log --since +0").text.find("Init"), std::string::npos); // its dates have whole seconds
    fs::remove(directory / "p/run/kernel");
    fails("trace show --since 6s", "the date of the last boot is not known");
    EXPECT_NE(call("trace show --since +0").text, "");
}

TEST_F(PanelCommand, SaysWhatIsWrongInOneLine) {
    fails("boot", "not a panel");
    succeed("create p");
    fails("create p", "the directory is not empty");
    fails("ps", "panel boot");
    fails("off", "off already");
    succeed("boot --stepped");
    fails("boot", "on already");
    fails("start '\\MMCMemory\\none.exe'", "no such file");
    writeText(directory / "p/fs/MMCMemory/text.exe", "text");
    fails("start '\\MMCMemory\\text.exe'", "it is not a program");
    std::string head(0x80, '\0'); // of a panel executable: signature, machine, subsystem, no sections
    head.replace(0, 2, "MZ").replace(0x3C, 1, "\x20").replace(0x20, 2, "PE").replace(0x24, 2, "\xC0\x01");
    head.replace(0x20 + 24 + 68, 1, "\x09");
    writeText(directory / "p/fs/MMCMemory/panel.exe", head);
    for (const std::string loader : {"/nowhere/loader", "/tmp"}) {
        setenv("PANEL_LOADER", loader.c_str(), 1);
        fails("start '\\MMCMemory\\panel.exe'", "its loader is missing or not executable: " + loader + " (");
    }
    unsetenv("PANEL_LOADER");
    fails("send NoWindow Message 1", "NoWindow");
    isMisused("device BZR1 refuse --error 0", "--error 0 would be a success");
    fails("plug missing-folder", "missing-folder");
    fails("unplug 'Hard Disk'", "Hard Disk");
    isMisused("device BKL2 refuse", "BKL2");
    isMisused("device BKL1 refuse beep", "beep");
    isMisused("device tags code TAG_Nope", "TAG_Nope");
    isMisused("device NANDFlash set 1", "0 values");
    isMisused("device BKL1 explode", "explode");
    isMisused("device BKL1 set 1 2 3 4294967296", "32-bit");
    isMisused("device BKL1 set 1 2", "4 values");
    isMisused("fault add Sleep", "cannot fail");
    isMisused("fault add CreateFileW --call 0", "from 1");
    for (const char* action : {"--hold", "--cut"})
        isMisused(std::string("fault add CreateFileW --answer 3 ") + action, "--answer");
    isMisused("fault add --from 'a.exe#1 t1 WriteFile[1] --cut'", "behind the line");
    isMisused("unplug 'Hard Disk' --keep ''", "not a folder");
    isMisused("create ''", "not a directory for a panel");
    for (const std::string name : {"'a\\b'", "..", "''"})
        isMisused("plug p --as " + name, "not a valid volume name");
    isMisused("plug p --as " + std::string(63, 'n'), "too long");
    isMisused("fault add createfilew", "panel fault functions");
    isMisused("registry read 'HKEY_NONE\\a' v", "HKEY_NONE");
    fails("registry list 'HKLM\\none'", "no such key");
    isMisused("registry delete HKLM", "is a root");
    isMisused("registry write 'HKLM\\a\\\\c' v x", "empty name");
    isMisused("registry write 'HKLM\\a' " + std::string(256, 'v') + " x", "255 characters");
    isMisused("registry write 'HKLM\\1\\2\\3\\4\\5\\6\\7\\8\\9\\10\\11\\12\\13\\14\\15\\16\\17' v x", "16 levels");
    isMisused("registry write 'HKLM\\a' v 'x' --type REG_BINARY", "hexadecimal");
    isMisused("stauts", "did you mean \"status\"?");
    isMisused("fault lst", "did you mean \"list\"?");
    isMisused("ps --jsno", "did you mean \"--json\"?");
    isMisused("device NANDFlsh", "did you mean \"NANDFlash\"?");
    for (const char* duration : {"soon", "1.2.3", "5..s", "1h30", "1min1h", "5m5m"})
        isMisused(std::string("advance ") + duration, duration);
    isMisused("create q --date 2024-03-07T06:05:99", "not a date");
    isMisused("create q --guid 00", "16 bytes");
    isMisused("boot --factor 0", "between 0.001 and 100000");
    isMisused("tag set 7 0", "two digits");
    isMisused("trace show --function nope", "no function \"nope\"");
    isMisused("wait --exit typo", "no program \"typo\"");
    isMisused("touch --at -5 3", "no place -5 3");
    isMisused("touch --count 0", "--count");
    fails("kill Never.exe", "no program");
    fails("plug 'missing\nfolder'", "missing\\nfolder");
    fails("wait --window Never --limit 5s", "Never", 124);
    writeText(directory / "p/devices/tags/18", "02 O4");
    fails("tag list", "devices/tags/18: not bytes");
    for (const char* file :
         {"devices/BKL1.json", "devices/tags/48", "devices/requests", "devices/touches", "run/trace"}) {
        fs::remove(directory / "p" / file);
        ASSERT_EQ(mkfifo((directory / "p" / file).c_str(), 0600), 0);
    }
    fails("device BKL1", "BKL1.json");
    fails("tag list", "devices/tags/");
    succeed("touch");
    succeed("device BZR1");
    succeed("trace show");
    before = "trap '' XFSZ; ulimit -f 0;"; // like a disk that is full
    fails("create q", "cannot create a panel in q: cannot write ");
    EXPECT_FALSE(fs::exists(directory / "q"));
    fails("off", "the panel is off, but the shutdown was not clean: unflushed registry changes are lost (");
    before = "trap '' XFSZ; ulimit -f 100;"; // has no room for the kernel file
    fails("boot", "cannot make ");
    before.clear();
    EXPECT_EQ(json("status").at("on"), false);
}

TEST_F(PanelCommand, ChoosesWhatACutLeavesOfFiles) {
    isMisused("create p --storage some", "kept, closed or torn");
    succeed("create p --storage closed");
    install();
    EXPECT_EQ(call("storage").text, "closed\n");
    succeed("boot --stepped");
    succeed("start '\\MMCMemory\\Tarvex\\TarvexHelper.exe'");
    succeed("wait --window ORVATarvexHelper");
    EXPECT_NE(call("log").text, "");
    fails("cut --sectors 1", "panel storage torn");
    fails("fault add WriteFile --cut --sectors 1", "panel storage torn");
    succeed("cut");
    const fs::path place = directory / "p/fs/MMCMemory/Tarvex";
    EXPECT_EQ(fs::file_size(place / "helper_log0.txt"), 0U);
    EXPECT_GT(fs::file_size(place / "config.xml"), 0U);
    EXPECT_EQ(json("storage torn").at("storage"), "torn");
    succeed("boot --stepped"); // the registry starts the helper
    succeed("wait --window ORVATarvexHelper");
    succeed("fault add WriteFile --cut --sectors 1");
    EXPECT_EQ(json("fault list").at(0).at("sectors"), 1);
    succeed("fault add Sleep --hold");
    isMisused("fault add Sleep --hold --cut", "--hold");
    EXPECT_EQ(json("fault list").at(1).at("hold"), true);
    succeed("fault release");
    EXPECT_EQ(json("fault list").size(), 1U);
    const std::string log = call("log").text;
    succeed("cut --sectors 1");
    EXPECT_EQ(json("status").at("whyOff"), "panel cut");
    EXPECT_EQ(call("log").text, log.substr(0, 512));
}

TEST_F(PanelCommand, ShowsDevicesAndTellsThemWhatToDo) {
    succeed("create p --without SHC1 --model 1030 --guid 000102030405060708090a0b0c0d0e0f"); // nothing was left behind
    succeed("tag set 7 0a 0B0c");
    const Json tags = json("tag list");
    EXPECT_EQ(tags.at(0).at("bytes"), "0a 0b 0c");
    EXPECT_EQ(tags.at(1).at("bytes"), "06 04");
    EXPECT_EQ(tags.at(2).at("bytes"), "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f");
    succeed("tag remove 7");
    EXPECT_EQ(call("tag remove 7").code, 1);
    succeed("device BKL1 refuse write --error 21"); // also while it is off
    succeed("boot --stepped");
    succeed("device bkl1 set 128 1 0x80 1");
    const Json backlight = json("device BKL1");
    EXPECT_EQ(backlight.at("values"), Json({128, 1, 128, 1}));
    EXPECT_EQ(backlight.at("does").at("write"), "refuses with error 21");
    EXPECT_EQ(backlight.at("does").at("read"), "answers");
    EXPECT_EQ(json("status").at("backLight"), Json({128, 1, 128, 1}));
    isMisused("device SHC1 add 5", "the whole device");
    succeed("device SHC1 add");
    succeed("device BZR1 delay --time 2s beep");
    EXPECT_EQ(json("device BZR1").at("does").at("beep"), "answers after 2 s");
    succeed("device BKL1 answer");
    for (const Json& device : json("device"))
        EXPECT_EQ(device.at("present"), true) << device;
}

TEST_F(PanelCommand, PlugsDisksWithPartitions) {
    succeed("create p");
    fs::create_directories(directory / "one");
    fs::create_directories(directory / "two");
    EXPECT_EQ(call("plug one - two --as Stick").text, "Plugged a copy of one as \\Stick, on DSK1:\n"
                                                      "Plugged a partition that is not mounted, on DSK1:\n"
                                                      "Plugged a copy of two as \\Hard Disk, on DSK1:\n");
    succeed("boot --stepped");
    succeed("plug two --as 'USB Disk' --ready-after 30s --in-place");
    EXPECT_EQ(json("plug --without-partitions --never-ready").at("device"), "DSK3:");
    succeed("plug one");
    const Json volumes = json("status").at("volumes");
    ASSERT_EQ(volumes.size(), 6U);
    EXPECT_EQ(volumes.at(5), Json({{"name", "Hard Disk2"}, {"device", "DSK4:"}, {"inPlace", false}}));
    succeed("plug one two --attributes 0x12 --attributes 2 --as Third");
    const Json disks = json("status").at("disks");
    ASSERT_EQ(disks.size(), 5U);
    EXPECT_EQ(disks.at(4).at("partitions").at(0), Json({{"volume", "Third"}, {"attributes", 0x12}}));
    EXPECT_NE(call("status").text.find("DSK5: ready at once, \\Third 0x12, not mounted 0x2"), std::string::npos);
    EXPECT_EQ(call("plug one --as Later --attributes 2").text,
              "Plugged a partition that is not mounted (panel mount \"Later\"), on DSK6:\n");
    EXPECT_FALSE(fs::exists(directory / "p/fs/Later"));
    fails("plug two --as later", "already");
    EXPECT_EQ(json("mount later").at("mounted"), "later");
    EXPECT_TRUE(fs::exists(directory / "p/fs/Later"));
    EXPECT_EQ(json("status").at("disks").at(5).at("partitions").at(0),
              Json({{"volume", "Later"}, {"attributes", 0x12}}));
    fails("mount Later", "waits to be mounted");
    writeText(directory / "p/fs/Later/written", "by a program");
    fails("unplug Later --keep two/..", "not empty");
    succeed("unplug Later --keep kept/disk");
    EXPECT_TRUE(fs::exists(directory / "kept/disk/written"));
    fails("unplug 'USB Disk' --keep two/deeper", "lies in the panel or in the disk"); // plugged in place
    EXPECT_EQ(json("unplug Third").at("unplugged"), "Third");
    succeed("plug one --as 'hard disk3'");
    before = onTerminal;
    EXPECT_NE(
        call("plug one").text.find("Copying ...\r\033[KPlugged a copy of one as \\Hard Disk4"), // whatever the case
        std::string::npos);
    before.clear();
    succeed("unplug 'Hard Disk4'");
    succeed("unplug 'hard disk3'");
    succeed("unplug 'hard disk'");
    succeed("unplug dsk3:");
    EXPECT_FALSE(fs::exists(directory / "p/fs/Stick")); // the whole disk went
    EXPECT_EQ(json("status").at("volumes").size(), 4U);
    isMisused("plug", "without partitions");
    isMisused("plug one --as A --as B", "\"B\" names no partition");
}

TEST_F(PanelCommand, LetsTheUserComeAndGo) {
    succeed("create p");
    succeed("boot --stepped");
    EXPECT_EQ(json("status").at("userActive"), true);
    succeed("idle");
    EXPECT_EQ(json("status").at("userActive"), false);
    succeed("active");
    EXPECT_EQ(json("status").at("userActive"), true);
    succeed("idle");
    EXPECT_EQ(json("touch --at 10 20").at("touch"), "landed");
    EXPECT_EQ(json("status").at("userActive"), true);
    succeed("touch --count 3 --right --press");
    EXPECT_EQ(call("touch --move --press").code, 2);
    const Json status = json("status");
    EXPECT_EQ(Json({status.at("flashWritable"), status.at("cursor"), status.at("hook"), status.at("buzzer")}).dump(),
              R"([false,{"count":0,"shown":true},null,{"error":null,"last":null,"requests":0,"time":null}])");
}

TEST_F(PanelCommand, NamesTheProgramThatKeepsTimeFromMoving) {
    succeed("create p");
    install();
    succeed("boot --stepped");
    succeed("start '\\MMCMemory\\Actor.exe' spin");
    for (const char* command : {"advance 1s", "wait --window none --limit 1s"})
        fails(std::string("--patience 100ms ") + command, "Actor.exe#1 is busy");
    EXPECT_EQ(call("--patience 100ms start --wait '\\MMCMemory\\Actor.exe' sleep 1").code, 125);
    EXPECT_EQ(call("--patience 100ms advance 1s").code, 1);
    const pid_t pid = json("ps").at("processes").at(0).at("hostPid");
    kill(pid, SIGSTOP);
    fails("--patience 100ms advance 1s", "Actor.exe#1 is stopped");
    succeed("off");
}

TEST_F(PanelCommand, StartsAndWaitsWithTheProgramsExitCode) {
    succeed("create p");
    install();
    succeed("boot --stepped");
    EXPECT_EQ(call("start --wait '\\MMCMemory\\Actor.exe' exit 7").code, 7);
    EXPECT_EQ(call("start --wait '\\MMCMemory\\Actor.exe' exit 300").code, 126);
    EXPECT_EQ(call("start --wait --limit 2s '\\MMCMemory\\Actor.exe' sleep 3000").code, 124);
    EXPECT_EQ(call("start --wait '\\MMCMemory\\none.exe'").code, 125);
    succeed("start '\\MMCMemory\\Actor.exe' wait never");
    isMisused("kill actor.exe", "Actor.exe#3 or Actor.exe#4");
    EXPECT_EQ(json("kill actor.exe#4").at("killed"), "Actor.exe#4");
    EXPECT_EQ(json("wait --exit Actor.exe#4").at("exitCode"), 0xC0000005U);
    succeed("attributes '\\mmcmemory\\Actor.exe' --read-only --written 2024-03-07T06:05:09");
    const Json file = json("attributes '\\MMCMemory\\Actor.exe'");
    EXPECT_EQ(file.at("attributes"), "read-only");
    EXPECT_EQ(file.at("written"), "2024-03-07 06:05:09 UTC");
    EXPECT_EQ(call("attributes '\\MMCMemory\\Actor.exe' --writable").text.find("normal, "), 0U);
    fails("attributes '\\MMCMemory\\none'", "no such file");
    succeed("fault add CreateFileW --program Actor.exe --call 1");
    EXPECT_EQ(call("start --wait '\\MMCMemory\\Actor.exe' hold '\\MMCMemory\\Actor.exe'").code, 5);
    EXPECT_EQ(json("fault list").at(0).at("hits"), 1);
    succeed("cut");
    for (const char* words : {"CreateFileW --nope", "1 Actor.exe#1 t1 Sleep[1](", "CreateFileW[1] --cut", "",
                              "a.exe#1 t1 WriteFile[2] (--cut", "a.exe#1 t1 WriteFile[2] --call 3"})
        isMisused("boot --fault '" + std::string(words) + "'", "");
    succeed("registry write 'HKLM\\init' Launch1 '\\MMCMemory\\Actor.exe'");
    EXPECT_EQ(json("boot --stepped --trace --fault 'CreateFileW --call 2' --fault ' 9 Actor.exe#1 t1 Sleep[1] --cut' "
                   "--fault '--from \"a.exe#1 t1 Sleep[2]\" --hold' --fault 'a.exe#1 t1 Sleep[2](1) = void --cut'")
                  .at("started"),
              Json({{{"launch", 1}, {"name", "Actor.exe#1"}}}));
    EXPECT_EQ(json("fault list").at(1).at("cut"), true);
    EXPECT_EQ(json("fault list").at(2).at("hold"), true);
    EXPECT_EQ(json("fault list").at(3).at("cut"), true);
    EXPECT_EQ(call("start --wait '\\MMCMemory\\Actor.exe' hold '\\MMCMemory\\Actor.exe' sleep 1").code, 0);
    succeed("fault add --answer 66 --from \"$(" + programFile("panel").string() +
            " -C p trace show --process Actor.exe#2 --function CreateFileW)\"");
    const Json fault = json("fault list").at(4);
    EXPECT_EQ(fault.at("program"), "Actor.exe");
    EXPECT_EQ(fault.at("start"), 2);
    isMisused("fault add --from 'CreateFileW[1]'", "not a line of the trace");
    succeed("off");
    succeed("boot --flowing --factor 1000");
    EXPECT_EQ(call("start --wait '\\MMCMemory\\Actor.exe' sleep 1000 exit 3").code, 3);
    before = onTerminal;
    const std::string progress = call("advance 25min").text; // takes more than a second
    EXPECT_NE(progress.find(" of 25 min\r\033[K"), std::string::npos) << progress;
    before.clear();
}

TEST_F(PanelCommand, WaitsForWhatScriptsAskFor) {
    succeed("create p");
    install();
    writeText(directory / "p/fs/MMCMemory/Tarvex/ScreenSaverConfig.xml",
              "<ScreenSaver><Settings><Enabled>1</Enabled><UserInactivityTimeout>60000</UserInactivityTimeout>"
              "<MinLuminosityLevel>0</MinLuminosityLevel></Settings></ScreenSaver>");
    succeed("registry write 'HKLM\\init' Launch61 '\\MMCMemory\\Tarvex\\TarvexHelper.exe'");
    succeed("boot --stepped");
    const struct {
        const char *words, *field;
        Json value;
        std::uint64_t time; // since boot, behind the wait
    } rows[] = {
        {"--log 'Module manager init'", "line", nullptr, 0},
        {"--shows nothing", "background", "none", 0},
        {"--values SHC1 0", "values", {0}, 0},
        {"--values tags 18 0204", "bytes", "02 04", 0},
        {"--values bkl1 0 1", "values", {0, 1, 0, 1}, 60000},
        {"--shows ORVASCREENSAVER", "background", "black", 60000},
        {"--shows black", "process", "TarvexHelper.exe#1", 60000},
        {"--status backLight.2 0", "value", 0, 60000},
        {"--status clock.factor 1", "value", 1, 60000},
        {"--status screen.background black", "status", "screen.background", 60000},
        {"--request any", "device", "SHC1", 300000},
        {"--request SHC1 count", "time", 600000, 600000}, // the next one, not that one again
        {"--file '\\mmcmemory\\tarvex\\EMMC.xml'", "folder", false, 600000},
    };
    for (const auto& row : rows) {
        const Json event = json("wait --limit 10min " + std::string(row.words));
        EXPECT_TRUE(event.contains(row.field) && (row.value.is_null() || event.at(row.field) == row.value)) << event;
        EXPECT_EQ(json("status").at("clock").at("time"), row.time) << row.words;
        if (row.words == std::string("--values SHC1 0"))
            succeed("idle");
    }
    for (const char* words :
         {"--file '\\MMCMemory\\No'", "--request BZR1 beep", "--values SHC1 1", "--values tags 18 02",
          "--status windows.9.visible true", "--status signals.None 1", "--status cursor.count 1", "--shows white"})
        fails("wait --limit 1s " + std::string(words), "after 1 s", 124);
    for (const char* words :
         {"", "--file a --log b", "--request BZR1 read", "--values SHC1 1 2", "--values BZR1 1", "--values BKL1 -1",
          "--status usrActive true", "--status userActive", "--status screen.backgroundd none",
          "--status backLight 200", "--status backLight.x 200", "--status", "--values BKL1", "--values tags 18",
          "--values tags 18 2", "--values tags model 02", "--request any reed", "--exit TarvexHelper.exe#0",
          "--exit TarvexHelper.exe#first"})
        isMisused("wait " + std::string(words), "");
}
