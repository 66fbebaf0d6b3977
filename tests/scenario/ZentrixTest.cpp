// The Zentrix cleanup at the helper's start, on the write-protected flash.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using panel::Behaviour;
using Files = std::map<std::string, std::string>;

namespace {

constexpr const char* folder = "\\NANDFlash\\ZentrixHMI";
constexpr const char* executable = "\\NANDFlash\\ZentrixHMI\\ZentrixHMICE.exe";
constexpr const char* backup = "\\NANDFlash\\ZentrixHMI\\_backup_ZentrixHMICE.exe";

const Lines begun{"INFO;Init of Helper", "INFO;Zentrix needs a cleanup"};
constexpr const char* failure = "ERROR;Failed to cleanup zentrix";
constexpr const char* done = "INFO;Zentrix cleanup succeded";
constexpr const char* refused = "ERROR;Exception FlashNotWritableException: Generic Exception";

// Whether it asks for a change of the flash's files.
bool changesFlash(const TracedCall& call) {
    static const std::set<std::string> changing{"DeleteFileW",        "MoveFileW",        "CopyFileW",
                                                "SetFileAttributesW", "CreateDirectoryW", "RemoveDirectoryW"};
    return (changing.contains(call.function) && call.arguments.find("\\NANDFlash\\") != std::string::npos) ||
           (call.function == "CreateFileW" && call.firstText().starts_with(folder));
}

// The flash's changes and the switches of its protection, in order: "writable", "DeleteFileW", "read-only".
Lines steps(ScenarioPanel& panel) {
    Lines result;
    for (const TracedCall& call : panel.calls())
        if (call.arguments.find("0x70230") != std::string::npos)
            result.push_back("writable");
        else if (call.arguments.find("0x7022c") != std::string::npos)
            result.push_back("read-only");
        else if (changesFlash(call))
            result.push_back(call.function);
    return result;
}

void expectNothingWrittenWhileProtected(const ScenarioPanel& panel) {
    for (const TracedCall& call : panel.calls())
        EXPECT_EQ(call.text.find("error 19"), std::string::npos) << call.text;
}

Lines upToTheRegistry(const Lines& log) {
    return {log.begin(), std::find(log.begin(), log.end(), "INFO;Configuring my autorun")};
}

} // namespace

TEST(Zentrix, IsCleanedUpWhateverStateTheExecutableIsIn) {
    const struct {
        const char* what;
        bool backup;
        bool executable;
        bool busy;
        Files left;
        Lines calls;
    } cases[] = {
        {"nothing to do", false, true, false, {{"ZentrixHMICE.exe", "runtime"}}, {}},
        {"replaced", true, true, false, {{"ZentrixHMICE.exe", "backup"}}, {"DeleteFileW", "MoveFileW"}},
        {"missing", true, false, false, {{"ZentrixHMICE.exe", "backup"}}, {"MoveFileW"}},
        {"busy",
         true,
         true,
         true,
         {{"ZentrixHMICE.exe", "backup"}, {"_rm_ZentrixHMICE.exe", ""}},
         {"DeleteFileW", "MoveFileW", "MoveFileW"}},
        {"not movable", true, true, false, {{"_backup_ZentrixHMICE.exe", "backup"}}, {"DeleteFileW", "MoveFileW"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        ScenarioPanel panel;
        panel.install();
        if (each.executable)
            panel.write(executable, "runtime");
        if (each.backup)
            panel.write(backup, "backup");
        if (each.busy) {
            panel.put(executable, programFile("Actor"));
            panel.driver().start(executable, "wait never");
        }
        const bool moves = !each.left.contains("_backup_ZentrixHMICE.exe");
        if (!moves)
            panel.failCall("MoveFileW");
        panel.driver().setTracing(true);
        panel.startInPlace();
        Files left = panel.tree(folder);
        if (each.busy) {
            left["_rm_ZentrixHMICE.exe"].clear(); // it is there, but need not be shown
            EXPECT_TRUE(panel.isRunning("ZentrixHMICE.exe#1"));
        }
        EXPECT_EQ(left, each.left);
        EXPECT_EQ(upToTheRegistry(panel.log()), !each.backup
                                                    ? Lines{"INFO;Init of Helper"}
                                                    : joined({begun, moves ? Lines{done} : Lines{failure, done}}));
        expectNothingWrittenWhileProtected(panel);
        EXPECT_EQ(steps(panel), each.backup ? joined({{"writable"}, each.calls, {"read-only"}}) : Lines{});
        EXPECT_FALSE(panel.driver().status().flashWritable);
        if (!moves) {
            panel.reboot();
            panel.startInPlace();
            EXPECT_EQ(panel.tree(folder), (Files{{"ZentrixHMICE.exe", "backup"}}));
        }
    }
}

TEST(Zentrix, EndsTheStartWhenTheFlashCannotBeSwitched) {
    const struct {
        const char* operation; // empty: the driver is missing
        bool moved;
    } cases[] = {{"", false}, {"writable", false}, {"read-only", true}};
    for (const auto& [operation, moved] : cases) {
        SCOPED_TRACE(operation);
        ScenarioPanel panel;
        panel.install();
        panel.write(executable, "runtime");
        panel.write(backup, "backup");
        if (*operation)
            panel.panel().devices().setBehaviour("NANDFlash", {Behaviour::Kind::refuse, 5}, operation);
        else
            panel.panel().devices().setPresent("NANDFlash", false);
        panel.driver().setTracing(true);
        EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
        EXPECT_EQ(panel.log(), joined({begun, {refused}})); // nothing behind it is reached
        EXPECT_EQ(panel.tree(folder),
                  moved ? (Files{{"ZentrixHMICE.exe", "backup"}})
                        : (Files{{"ZentrixHMICE.exe", "runtime"}, {"_backup_ZentrixHMICE.exe", "backup"}}));
        // Refused on the way back: the flash stays writable, until the power goes, since the next start sees no need.
        EXPECT_EQ(panel.driver().status().flashWritable, moved);
        EXPECT_EQ(steps(panel),
                  moved ? (Lines{"writable", "DeleteFileW", "MoveFileW", "read-only"}) : Lines{"writable"});
        expectNothingWrittenWhileProtected(panel);
        panel.panel().devices().setBehaviour("NANDFlash", {});
        panel.panel().devices().setPresent("NANDFlash", true);
        panel.startInPlace();
        EXPECT_EQ(panel.tree(folder), (Files{{"ZentrixHMICE.exe", "backup"}}));
        EXPECT_EQ(panel.driver().status().flashWritable, moved);
    }
}
