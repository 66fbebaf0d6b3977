// What people take out of a panel and put into another: registry, trace, reports.
#include "tests/support/PanelCommand.h"

#include <cstdlib>

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
    succeed("registry delete 'HKCU\\a' N");
    succeed("registry delete 'HKCU\\a\\'");
    EXPECT_EQ(json("registry list HKCU").size(), 1U);
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
    isMisused("trace on --limit 4apples", "--limit");
    succeed("trace on");
    EXPECT_EQ(json("status").at("trace"), true);
    succeed("off");
    succeed("trace export t.json"); // tests/view opens such a file in a trace viewer
    EXPECT_EQ(Json::parse(readText(directory / "t.json")).at("traceEvents").back().at("ph"), "X");
    EXPECT_NE(call("trace export none/t.json").text.find("cannot write none/t.json"), std::string::npos);
}
