// What people take out of a panel and put into another: registry, trace, reports.
#include "tests/support/PanelCommand.h"

#include <cstdlib>
#include <iterator>
#include <sys/stat.h>

TEST_F(PanelCommand, ReadsAndChangesTheRegistry) {
    succeed("create p --version 3.7 --name Press");
    install();
    EXPECT_EQ(call("registry read HKLM\\\\ORVA Version").text, "3.7\n"); // works switched off, too
    EXPECT_EQ(call("registry read hkey_local_machine\\\\ident NAME").text, "Press\n");
    succeed("registry write 'HKLM\\init' Launch62 '\\MMCMemory\\Actor.exe'");
    succeed("registry write 'HKLM\\init' Launch9 '\\MMCMemory\\none.exe'");
    const Answer boot = call("boot --stepped");
    EXPECT_EQ(boot.code, 0);
    EXPECT_NE(boot.text.find("Launch9 of the registry: cannot start \\MMCMemory\\none.exe"), std::string::npos);
    EXPECT_NE(boot.text.find("Started Actor.exe#1, listed as Launch62"), std::string::npos) << boot.text;
    succeed("registry write 'HKCU\\a\\b' '' '32 00' --type REG_BINARY");
    succeed("registry write 'HKCU\\a' n 0x10 --type REG_DWORD --flush");
    EXPECT_EQ(call("registry read 'HKCU\\a' n").text, "10 00 00 00\n");
    const Json list = json("registry list 'HKCU\\a'");
    EXPECT_EQ(list.at(1).at("key"), "HKEY_CURRENT_USER\\a\\b");
    EXPECT_EQ(call("registry list --flash").text.find("a\\b"), std::string::npos);
    succeed("cut");
    EXPECT_EQ(json("registry list 'HKCU\\a'").size(), 1U); // what was flushed
    succeed("registry write --type REG_MULTI_SZ -- 'HKCU\\a' '[-]' '[a,b]' c");
    EXPECT_EQ(call("registry read 'HKCU\\a' '[-]'").text, "[a,b]\nc\n");
    succeed("registry delete 'HKCU\\a' N");
    succeed("registry delete 'HKCU\\a\\'");
    EXPECT_EQ(json("registry list HKCU").size(), 1U);
}

TEST_F(PanelCommand, MovesTheRegistryAsAFile) {
    std::string bytes = "00";
    for (int count = 0; count < 60; ++count)
        bytes += " fe";
    const std::string content = R"({"HKEY_CLASSES_ROOT": {}, "HKEY_CURRENT_USER": {}, "HKEY_CURRENT_USER\\z]y [x;": {
        "": {"type": "REG_SZ", "text": "default \"quoted\" \\ and ; no comment"}, "@": {"type": "REG_SZ", "text": ""},
        "q\"b\\": {"type": "REG_EXPAND_SZ", "text": "%x%"}, "Ä€": {"type": "REG_SZ", "text": "ü€"},
        "Lines": {"type": "REG_SZ", "text": "a\r\nb"}, "Open": {"type": "REG_SZ", "bytes": "61 00"},
        "List": {"type": "REG_MULTI_SZ", "texts": ["a", "ß"]}, "Dword": {"type": "REG_DWORD", "number": 4294967295},
        "Short": {"type": "REG_DWORD", "bytes": "01"}, "Big": {"type": "REG_DWORD_BIG_ENDIAN", "bytes": "00 00 00 01"},
        "None": {"type": "REG_NONE", "bytes": ""}, "Link": {"type": "REG_LINK", "bytes": "01"},
        "Strange": {"type": "REG_4660", "bytes": ")" +
                                bytes + R"("},
        "Bytes": {"type": "REG_BINARY", "bytes": ")" +
                                bytes + R"("}}, "HKEY_CURRENT_USER\\z]y [x;\\b": {},
        "HKEY_CURRENT_USER\\a": {}, "HKEY_LOCAL_MACHINE": {}, "HKEY_USERS": {"Odd": {"type": "REG_MULTI_SZ", "bytes": "61"}}})";
    auto registry = nlohmann::ordered_json::parse(content);
    succeed("create p");
    for (const std::string option : {"", " --ansi"}) {
        writeText(directory / "p/registry/flash.json", registry.dump());
        succeed("registry export r.reg" + option);
        EXPECT_EQ(readText(directory / "r.reg").substr(0, 2), option.empty() ? "\xFF\xFE" : "RE");
        fs::remove_all(directory / "other");
        before = "mkdir other; cd other;";
        succeed("create p");
        writeText(directory / "other/p/registry/flash.json", "{}");
        before = "cd other;";
        succeed("registry import ../r.reg");
        EXPECT_EQ(nlohmann::ordered_json::parse(readText(directory / "other/p/registry/flash.json")), registry);
        before.clear();
        if (option.empty())
            fails("registry export --ansi r.reg", "cannot express the value \"Odd\""); // half a character
        registry["HKEY_USERS"].clear();
    }
    succeed("registry write HKU Greek Ω");
    fails("registry export --ansi r.reg", "lacks a character of this line: \"Greek\"");
    isMisused("registry write 'HKU\\a] ;' v x", "cannot express a key's name"); // it would look like a comment
    writeText(directory / "p/registry/flash.json", R"({"HKEY_USERS\\a] ;": {}})");
    fails("registry export r.reg", "cannot express a key's name");
    const struct {
        const char *text, *reason;
    } rows[] = {{"[]", "the file is not a JSON object"},
                {R"({"HKEY_USERS": {}, "HKEY_USERS\\a": 1})", "\"HKEY_USERS\\a\" is not"},
                {R"({"HKEY_USERS": {"a": {"type": "REG_SZ", "text": ""}, "b": []}})", "\"b\" is not"},
                {R"({"HKEY_USER": {}})", "root"}};
    for (const auto& row : rows) {
        writeText(directory / "p/registry/flash.json", row.text);
        fails("registry list", row.reason);
    }
}

TEST_F(PanelCommand, MergesRegistryFiles) {
    succeed("create p");
    succeed("registry write 'HKCU\\a\\b' v x");
    succeed("boot --stepped --without-init");
    const std::string file =
        "\r\n; a comment\r\n[HKEY_CURRENT_USER\\A] ; another\r\n\"n\" = dword:1F\r\n\"gone\"=\"x\"\n"
        "@=\"old\"\n\"gone\"=-\n@=hex(2):25,78,\\\n  25,\\ ; continued\n\t00\n\"l\"=\"a\r\n;\n]\\\"\" ; b\n"
        "[-hkcu\\a\\B]\n[-HKCU\\none]\n\n";
    writeText(directory / "r.reg", "REGEDIT4" + file);
    succeed("registry import r.reg");
    EXPECT_EQ(call("registry export x.reg 'hkcu\\A'").text, "Wrote HKEY_CURRENT_USER\\a to x.reg\n");
    EXPECT_EQ(json("registry list 'HKCU\\A'").dump(),
              R"([{"key":"HKEY_CURRENT_USER\\a","values":[{"bytes":"1f 00 00 00","name":"n","type":"REG_DWORD"},)"
              R"({"bytes":"25 00 78 00 25 00 00 00","name":"","text":"%x%","type":"REG_EXPAND_SZ"},)"
              R"({"bytes":"61 00 0d 00 0a 00 3b 00 0a 00 5d 00 22 00 00 00","name":"l","text":"a\r\n;\n]\"",)"
              R"("type":"REG_SZ"}]}])");
    EXPECT_NE(call("registry list").text.find(R"("a\x0d\n;\n]"")"), std::string::npos);
    writeText(directory / "r.reg", "Windows Registry Editor Version 5.00" + file);
    succeed("registry import r.reg"); // bytes of this version are not ANSI
    EXPECT_EQ(json("registry read 'HKCU\\a' ''").at("bytes"), "25 78 25 00");
    const Json merged = json("registry list");
    const struct {
        std::string text, reason;
    } rows[] = {
        {"", "line 1: a registry file begins with"},
        {"REGEDIT5\n[HKCU\\b]\n", "line 1: "},
        {std::string("\xFF\xFER\0E\0", 6), "line 1: "},
        {std::string("\xFF\xFE\0\xD8\n\0", 6), "line 1: not text"},
        {"REGEDIT4\n[HKCU\\b]\n[-HKCU]\n", "line 3: HKEY_CURRENT_USER is a root"},
        {"REGEDIT4\n[HKXX\\b]\n", "line 2: no such root"},
        {"REGEDIT4\n[HKCU\\b]\n[HKCU\\b", "line 3: the key has no closing bracket"},
        {"REGEDIT4\n\"a\"=\"b\"\n", "line 2: a value without a key"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=\"\\b\"\n", "line 3: in quotation marks"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=\"b\\\n\"", "line 3: in quotation marks"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=\"b\n\n", "line 3: the text has no closing"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=\"b\n\"c\"=\"d\"\n",
         "line 4: not understood: c\"=\"d\", behind a text that begins in line 3"},
        {"REGEDIT4\n[HKCU\\b] ; as [c]\n", "line 2: a comment behind a key"},
        {"\xEF\xBB\xBFREGEDIT4\n", "line 1: a registry file begins with"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=\"b\" c\n", "line 3: not understood: c"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=dword:123456789\n", "line 3: not understood"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex:1g\n", "line 3: a comma is missing"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex:00,\\\n", "line 4: the file ends"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex(7:00\n", "line 3: the type has no closing"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex:00,01, ;\n", "line 3: no byte follows"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex:00,0", "line 3: a byte has two digits"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\"=hex:00,\\\n\n", "line 4: the line before is continued"},
        {"REGEDIT4\n[HKCU\\b]\n\"a\rb\"=-\n", "line end"},
        {"REGEDIT4\n[HKCU\\b]\n\"" + std::string(256, 'a') + "\"=-\n", "255 characters"},
    };
    for (const auto& row : rows) {
        writeText(directory / "bad.reg", row.text);
        fails("registry import bad.reg", row.reason);
    }
    EXPECT_EQ(json("registry list"), merged);
    succeed("cut");
    EXPECT_EQ(json("registry list HKCU").size(), 3U); // nothing was flushed
}

TEST_F(PanelCommand, WritesFilesWhereCpWould) {
    succeed("create p");
    ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
    fs::create_symlink("behind", directory / "link");
    fs::create_symlink("nothing", directory / "nowhere");
    fs::create_symlink("/proc/self/fd/1", directory / "output");
    fs::create_directory(directory / "folder");
    for (const char* file : {"link", "mine.new"})
        writeText(directory / file, "old");
    fs::permissions(directory / "behind", fs::perms::owner_read);
    before = "(cat pipe >piped &);";
    EXPECT_EQ(call("registry export pipe").text, "");
    before.clear();
    succeed("registry export link");
    succeed("registry export mine");
    EXPECT_TRUE(fs::is_fifo(directory / "pipe") && fs::is_symlink(directory / "link"));
    EXPECT_EQ(readText(directory / "behind"), readText(directory / "mine"));
    EXPECT_EQ(fs::status(directory / "behind").permissions(), fs::perms::owner_read);
    EXPECT_EQ(readText(directory / "mine.new"), "old");
    EXPECT_EQ(call("registry export output").text, readText(directory / "mine"));
    for (const std::string command : {"registry export ", "report "})
        for (const std::string file : {"folder", "none/file", "nowhere"})
            fails(command + file, "cannot write " + file + ": ");
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), {}), 10); // and no other file is left
}

TEST_F(PanelCommand, EndsTheTraceAtItsLimit) {
    succeed("create p");
    install();
    succeed("boot --stepped");
    succeed("trace on --limit 4KiB");
    for (int program = 1; program <= 3; ++program)
        succeed("start '\\MMCMemory\\Tarvex\\TarvexHelper.exe'");
    succeed("start '\\MMCMemory\\Actor.exe' sleep 1 sleep 1");
    succeed("advance 10min");
    const Lines lines = linesOf(readText(directory / "p/run/trace"));
    const std::size_t calls = lines.size() - 1;
    EXPECT_NE(lines.back().find(" the trace ends here: it has reached its limit of 4 KiB"), std::string::npos);
    EXPECT_NE(call("trace show --function Sleep").text.find("panel: "), std::string::npos);
    const std::uintmax_t size = fs::file_size(directory / "p/run/trace") - lines.back().size() - 1;
    EXPECT_TRUE(size >= 4096 && size - lines[calls - 1].size() - 1 < 4096) << size;
    EXPECT_EQ(json("status").at("trace"), false);
    fails("trace on --limit 4KiB", "already");
    for (const char* bad : {"4apples", "-1"})
        isMisused(std::string("trace on --limit ") + bad, "--limit");
    succeed("trace on --limit 18446744073709551615");
    EXPECT_EQ(json("status").at("trace"), true);
    succeed("start '\\MMCMemory\\Actor.exe' sleep 1");
    succeed("advance 1s");
    EXPECT_EQ(call("trace show --function Sleep").text.find("panel: "), std::string::npos); // it goes on
    succeed("trace clear");
    EXPECT_EQ(call("trace show --function Sleep").code, 0); // it is on, though without a line
    succeed("start '\\MMCMemory\\Actor.exe' sleep 1");
    succeed("advance 1s");
    succeed("off");
    succeed("trace export t.json"); // tests/view opens such a file in a trace viewer
    EXPECT_EQ(Json::parse(readText(directory / "t.json")).at("traceEvents").back().at("ph"), "X");
    EXPECT_NE(call("trace export none/t.json").text.find("cannot write none/t.json"), std::string::npos);

    succeed("boot --stepped"); // a file that replaces the trace may begin with the same line
    const std::string line = "         0 Actor.exe#1 t1 Sleep[1](1) = void\n";
    writeText(directory / "p/run/trace", line);
    writeText(directory / "next", line + line);
    before = "mkfifo f; ('" + programFile("panel").string() +
             "' -C p trace show --follow >f &); { read first; mv next p/run/trace;";
    EXPECT_EQ(call("off; cat; } <f #").text, "The panel is off\n" + line + line);
    before.clear();
}

TEST_F(PanelCommand, MakesAPanelOfAReport) {
    succeed("create p --screen 640x480 --date 2024-03-07T06:05:09");
    install();
    writeText(directory / "disk/file", "x");
    fs::create_symlink("/etc", directory / "disk/link");
    succeed("plug disk --in-place --as Stick");
    succeed("boot --stepped --trace");
    succeed("start '\\MMCMemory\\Tarvex\\TarvexHelper.exe'");
    succeed("wait --window ORVATarvexHelper");
    const std::string log = call("log").text;
    const std::string trace = readText(directory / "p/run/trace");
    // The panel can be switched off while the report is compressed. The user's options for tar do not count.
    fs::create_directories(directory / "bin");
    writeText(directory / "bin/gzip", "#!/bin/sh\n'" + programFile("panel").string() +
                                          "' -C p off >off.txt 2>&1\nPATH=${PATH#*:}\nexec gzip \"$@\"\n");
    fs::permissions(directory / "bin/gzip", fs::perms::owner_all);
    before = "PATH=$PWD/bin:$PATH TAR_OPTIONS=--exclude=registry";
    succeed("report r.tar.gz");
    EXPECT_EQ(readText(directory / "off.txt"), "The panel is off\n");
    before.clear();
    fails("create p --from r.tar.gz", "not empty");
    isMisused("create q --from r.tar.gz --model 7", "--model");
    EXPECT_EQ(json("create q --from r.tar.gz").at("directory"), (directory / "q").string());
    EXPECT_EQ(readText(directory / "q/run/trace"), trace);
    EXPECT_EQ(readText(directory / "q/report/log.txt"), log);
    EXPECT_EQ(Json::parse(readText(directory / "q/report/status.json")).at("on"), true);
    EXPECT_NE(readText(directory / "q/report/programs.txt").find("TarvexHelper.exe#1"), std::string::npos);
    for (const char* file : {"fs/MMCMemory/Tarvex/TarvexHelper.exe", "fs/MMCMemory/Tarvex/config.xml"})
        EXPECT_EQ(fs::last_write_time(directory / "q" / file), fs::last_write_time(directory / "p" / file)) << file;
    fs::rename(directory / "p", directory / "old");
    fs::rename(directory / "q", directory / "p");
    EXPECT_EQ(json("status").at("volumes").at(2), Json({{"name", "Stick"}, {"device", "DSK1:"}, {"inPlace", false}}));
    EXPECT_FALSE(fs::is_symlink(directory / "p/fs/Stick"));
    const char* places[] = {"fs/MMCMemory/own", "../own", "fs/../../own", ""};
    writeText(directory / "own", "mine");
    writeText(directory / "p/fs/MMCMemory/own", "lost");
    for (int number = 0; number < 4; ++number) { // what a boot restores as after a power cut
        const fs::path record = directory / ("p/run/uncommitted/1-" + std::to_string(number));
        writeText(record / "path", *places[number] ? places[number] : (directory / "own").string());
        writeText(record / "committed", "restored");
    }
    succeed("boot --stepped");
    EXPECT_EQ(readText(directory / "p/fs/MMCMemory/own"), "restored");
    EXPECT_EQ(readText(directory / "own"), "mine");
    succeed("wait --window ORVATarvexHelper");
    writeText(directory / "p/run/kernel", "damaged");
    EXPECT_EQ(call("report r.tar.gz").code, 0);
    succeed("create q --from r.tar.gz");
    fs::remove_all(directory / "q");

    writeText(directory / "made/q/devices/panel.json", "{}");
    const struct {
        std::string command, reason; // how a bad archive "b" is made
    } rows[] = {
        {"echo text >b", "gzip"},
        {"head -c 5000 r.tar.gz >b", "gzip"},
        {"tar -czf b -T /dev/null", "it is empty"},
        {"tar -czPf b /etc/hostname", "\"/etc/hostname\" does not lie"},
        {"tar -czPf b --transform 's,^,q/../,' disk/file", "\"q/../disk/file\" does not lie"},
        {"tar -czf b disk made", "does not lie in its only folder"},
        {"tar -czf b disk", "\"disk/link\" is neither"},
        {"tar -czf b -C made q", "screen"},
        {"tar -czf b made", "not a panel"},
        {"tar -xzf r.tar.gz; rm panel/registry/now.json; tar -czf b panel",
         "the registry cannot be read: registry/now"},
        {"rm -r panel/fs/Windows; tar -xzf r.tar.gz panel/registry; tar -czf b panel", "no folder fs/Windows"},
        {"tar -xzf r.tar.gz; ln panel/devices/tags.json panel/link; tar -czf b panel", "\"panel/"},
        {"rm panel/link; sed -i s/640/0/ panel/devices/panel.json; tar -czf b panel", "not possible: 0"},
        {"tar -czf b --label=panel -T /dev/null", "it is empty"},
        {"rm b; mkfifo b", "no such file"},
    };
    for (const auto& row : rows) {
        before = row.command + ";";
        fails("create q --from b", row.reason);
        EXPECT_FALSE(fs::exists(directory / "q")) << row.command;
    }
    before.clear();
    fails("create q/r --from b", "no such file");
    fs::create_symlink("nothing", directory / "hollow");
    for (const char* place : {"hollow", "hollow/r"})
        fails(std::string("create ") + place, "cannot create a panel in hollow");
    EXPECT_TRUE(fs::is_symlink(directory / "hollow"));
    EXPECT_NE(call("report /dev/full").text.find("No space left"), std::string::npos);
    isMisused("create q --from ''", "report");

    fs::create_directory(directory / "tmp");
    writeText(directory / "bin/tar", "#!/bin/sh\nkill -INT $PPID\nexec sleep 600\n"); // Ctrl-C meanwhile
    fs::permissions(directory / "bin/tar", fs::perms::owner_all);
    before = "TMPDIR=$PWD/tmp PATH=$PWD/bin:$PATH";
    for (const char* command : {"report s.tar.gz", "create q/r --from r.tar.gz"})
        EXPECT_EQ(call(command).code, 130) << command;
    before.clear();
    EXPECT_TRUE(fs::is_empty(directory / "tmp") && !fs::exists(directory / "q"));
    for (const fs::directory_entry& entry : fs::directory_iterator(directory))
        EXPECT_EQ(entry.path().filename().string().find("s.tar"), std::string::npos) << entry.path();
    EXPECT_EQ(call("off").code, 1); // the kernel file is damaged
    fails("report none/r.tar.gz", "cannot write none/r.tar.gz");
}

TEST_F(PanelCommand, CompletesWordsForBash) {
    const struct {
        std::string line, words;
    } rows[] = {
        {"panel tr", "trace\n"},
        {"panel -C 'my panel' trace o", "on\noff\n"},
        {"panel -C trace o", "off\n"}, // "trace" is the directory
        {"panel device B", "BKL1\nBZR1\n"},
        {"panel device BKL1 r", "refuse\nremove\n"},
        {"panel device --error 3 \"BKL1\" bl", "block\n"},
        {"panel log --level ", "INFO\nERROR\n"},
        {"panel log --sin", "--since\n"},
        {"panel fault add CreateM", "CreateMsgQueue\nCreateMutexW\n"},
        {"panel trace show --failed --function ReleaseM", "ReleaseMutex\n"},
        {"panel create --storage t", "torn\n"},
        {"panel wait --request SH", "SHC1\n"},
        {"panel registry write --type REG_M", "REG_MULTI_SZ\n"},
        {"panel start \\\\MMC", ""}, // nothing: bash then offers files
    };
    for (const auto& [line, words] : rows) {
        setenv("COMP_LINE", (line + " rest").c_str(), 1);
        setenv("COMP_POINT", std::to_string(line.size()).c_str(), 1);
        EXPECT_EQ(call("completion panel word previous").text, words) << line;
    }
    unsetenv("COMP_LINE");
    before = "bash -c 'eval \"$(\"$0\" completion)\"; complete -p panel' '" + programFile("panel").string() + "';";
    EXPECT_EQ(call("--version").text.find("complete -o default -C "), 0U);
}
