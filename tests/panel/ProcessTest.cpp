// Programs on the panel: how they start, end, and what stays of them.
#include "platform/panel/kernel/Host.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <tagUserAPI.h>
#include <windows.h>

#include <csignal>
#include <string>

using namespace testing_panel;

namespace {

constexpr const char* actor = "\\MMCMemory\\Actor.exe";

void installActor(const char* path = actor) {
    put(path, programFile("Actor"));
}

std::optional<std::uint32_t> run(const char* commandLine, const char* path = actor) {
    return driver().waitForExit(driver().start(path, commandLine), 60000);
}

HANDLE create(const wchar_t* module, const wchar_t* commandLine = nullptr) {
    std::wstring words = commandLine ? commandLine : L"";
    PROCESS_INFORMATION information{};
    STARTUPINFOW startup{};
    const BOOL started = CreateProcessW(module, commandLine ? words.data() : nullptr, nullptr, nullptr, FALSE, 0,
                                        nullptr, nullptr, &startup, &information);
    return started ? information.hProcess : nullptr;
}

DWORD exitCode(HANDLE process) {
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process, &code));
    return code;
}

} // namespace

TEST(Processes, RunAndLeaveTheirExitCode) {
    installActor();
    const HANDLE process = create(L"\\mmcmemory\\ACTOR.exe", L"sleep 500 exit 300");
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(exitCode(process), STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(process, 499), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(exitCode(process), 300U); // 32 bits, unlike the host's
    EXPECT_EQ(GetTickCount(), 500U);
    const HANDLE byName = create(nullptr, L"\"\\MMCMemory\\Actor.exe\" exit 7");
    WaitForSingleObject(byName, INFINITE);
    EXPECT_EQ(exitCode(byName), 7U);
}

TEST(Processes, AreFoundByABareNameAndGetItAsTheirCommandLine) {
    installActor("\\Windows\\Actor.exe");
    installActor("\\Windows\\dotted.name");
    for (const wchar_t* found : {L"Actor", L"Actor.exe", L"dotted.name"})
        EXPECT_NE(create(found), nullptr) << std::wstring(found).size();
    for (const wchar_t* missing : {L"Actor.", L"\\Windows\\Actor", L"Windows\\Actor", L"dotted"})
        EXPECT_EQ(create(missing), nullptr) << std::wstring(missing).size();
    EXPECT_NE(create(nullptr, L"Actor sleep"), nullptr);
    std::string lines;
    for (const auto& process : driver().status().processes)
        lines += process.name + ' ' + process.commandLine + '\n';
    EXPECT_EQ(lines, "Actor.exe#1 Actor\nActor.exe#2 Actor.exe\ndotted.name#1 dotted.name\nActor.exe#3 sleep\n");
}

TEST(Processes, AreThirtyTwoAtMost) {
    installActor();
    int started = 0;
    while (create(L"\\MMCMemory\\Actor.exe", L"wait never"))
        ++started;
    EXPECT_EQ(GetLastError(), ERROR_NO_PROC_SLOTS);
    EXPECT_EQ(started, 31); // and this test
}

TEST(Processes, KeepTheirFileBusyAndTheirPath) {
    installActor("\\MMCMemory\\d\\Actor.exe");
    driver().start("MMCMemory\\D\\actor.EXE", "wait never");
    EXPECT_FALSE(DeleteFileW(L"\\MMCMemory\\d\\Actor.exe"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    writeFile("\\MMCMemory\\new", "new");
    EXPECT_FALSE(CopyFileW(L"\\MMCMemory\\new", L"\\MMCMemory\\d\\Actor.exe", FALSE));
    EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\d", L"\\MMCMemory\\e"));
    EXPECT_FALSE(DeleteFileW(L"\\MMCMemory\\e\\Actor.exe"));
    EXPECT_EQ(driver().status().processes.at(0).path, "\\MMCMemory\\D\\actor.EXE");
}

TEST(Processes, StandStillUntilTheirStarterWaitsOrEnds) {
    installActor();
    create(L"\\MMCMemory\\Actor.exe", L"set begun");
    const HANDLE begun = CreateEventW(nullptr, TRUE, FALSE, L"begun");
    EXPECT_EQ(WaitForSingleObject(begun, 0), WAIT_TIMEOUT); // a poll is no wait
    EXPECT_EQ(WaitForSingleObject(begun, INFINITE), WAIT_OBJECT_0);
    // The starter's own end lets it begin too: the inner one is not held by anything afterwards.
    EXPECT_EQ(run("start \\MMCMemory\\Actor.exe"), 0U);
}

TEST(Processes, TakeTheirObjectsWithThem) {
    installActor();
    EXPECT_EQ(run("lock m exit 5"), 5U);
    EXPECT_EQ(run("lock m"), 0U); // gone at the moment its holder ended
    const auto holder = driver().start(actor, "lock m hold \\MMCMemory\\file wait never");
    writeFile("\\MMCMemory\\file", "x");
    driver().settle();
    EXPECT_EQ(run("lock m"), 183U);
    EXPECT_FALSE(DeleteFileW(L"\\MMCMemory\\file"));
    const auto born = panel::host::startTime(holder.hostPid);
    kill(holder.hostPid, SIGKILL);
    EXPECT_TRUE(panel::host::waitForEnd(holder.hostPid, born, 60000));
    EXPECT_EQ(driver().waitForExit(holder, 60000), 0xC0000005U); // noticed, and cleared away
    EXPECT_TRUE(DeleteFileW(L"\\MMCMemory\\file"));
    EXPECT_EQ(run("lock m"), 0U);
    EXPECT_EQ(run("crash"), 0xC0000005U);
}

TEST(Processes, ThatDoNotKnowThePanelDoNotHoldItsTime) {
    writeFile("\\MMCMemory\\script.exe", "#!/bin/sh\necho \"$1\" > \"$PANEL/fs/MMCMemory/said\"\nexit 9\n");
    const auto script = driver().start("\\MMCMemory\\script.exe", "hello");
    EXPECT_EQ(driver().waitForExit(script, 60000), 9U);
    EXPECT_EQ(readFile("\\MMCMemory\\said"), "hello\n");
    EXPECT_EQ(GetTickCount(), 0U);
    writeFile("\\MMCMemory\\endless.exe", "#!/bin/sh\nread forever < /dev/zero\nsleep 1000\n");
    driver().start("\\MMCMemory\\endless.exe");
    Sleep(100000); // passes in no time
    EXPECT_EQ(GetTickCount(), 100000U);
}

TEST(Processes, TraceNamesStartsThreadsAndCalls) {
    installActor();
    driver().setTracing(true);
    run("sleep 20");
    run("sleep 30");
    Lines lines = linesOf(readText(panelDirectory() / "run/trace"));
    std::erase_if(lines, [](const std::string& line) { return line.find("Sleep[") == std::string::npos; });
    EXPECT_EQ(lines, (Lines{"        20 Actor.exe#1 t1 Sleep[1](20) = void after 20 ms",
                            "        50 Actor.exe#2 t1 Sleep[1](30) = void after 30 ms"}));
}

TEST(Trace, ShowsWhatACallAsksForAndGets) {
    failCall("DeviceIoControl", 2);
    startTrace();
    OpenEventW(EVENT_ALL_ACCESS, TRUE, L"none");
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, L"traced", 0, nullptr, 1, 0x20019, nullptr, &key, nullptr);
    RegOpenKeyExW(HKEY_CURRENT_USER, L"traced", 2, 0xF003F, &key);
    const BYTE data[100] = {};
    RegSetValueExW(key, L"long", 0, REG_BINARY, data, sizeof data);
    DWORD count = 0;
    const HANDLE file = CreateFileW(L"\\MMCMemory\\f", GENERIC_WRITE, 3, nullptr, CREATE_ALWAYS, 0x80, nullptr);
    WriteFile(file, data, 8, &count, nullptr);
    const HANDLE device = CreateFileW(L"BKL1:", GENERIC_READ | GENERIC_WRITE, 3, nullptr, OPEN_EXISTING, 0, nullptr);
    BYTE levels[16] = {1, 0, 0, 0, 0, 0, 0, 0, 255};
    DeviceIoControl(device, 0x113040C, levels, sizeof levels, nullptr, 0, &count, nullptr);
    for (int reading = 0; reading < 2; ++reading)
        DeviceIoControl(device, 0x1130408, nullptr, 0, levels, sizeof levels, &count, nullptr);
    TAG_Open(&count);
    CreateWindowExW(0x88, L"none", nullptr, WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, reinterpret_cast<HINSTANCE>(0x1234),
                    nullptr);
    DWORD size = 1;
    TAG_Get_Data(18, &size, levels, &count);
    TAG_Set_Data(18, 2, "\x01\x04", &count);
    std::string zeros;
    for (int each = 0; each < 64; ++each)
        zeros += "00 ";
    const std::string bright = "{01 00 00 00 00 00 00 00 ff 00 00 00 00 00 00 00}";
    const std::string wanted[] = {"OpenEventW(0x1f0003, 1, \"none\") = null error 2",
                                  "RegCreateKeyExW(HKEY_CURRENT_USER, \"traced\", 1, 0x20019, 0x",
                                  "RegOpenKeyExW(HKEY_CURRENT_USER, \"traced\", 2, 0xf003f, 0x",
                                  "RegSetValueExW(0x",
                                  ", \"long\", 3, {" + zeros + "... of 100}) = 0",
                                  "CreateFileW(\"\\MMCMemory\\f\", 0x40000000, 3, 2, 0x80) = 0x",
                                  ", 8, 8) = 1",
                                  ", 0x113040c, " + bright + ", {}) = 1",
                                  ", 0x1130408, {}) = 0 fault error 31",
                                  ", 0x1130408, {}, " + bright + ") = 1",
                                  "CreateWindowExW(0x88, \"none\", null, 0x80000000, 0x1234) = null error 1407",
                                  "TAG_Get_Data(18, 1, 2, {02}) = 1",
                                  "TAG_Set_Data(18, {01 04}) = 1"};
    std::string calls;
    for (const std::string& line : trace())
        calls += line + '\n';
    for (std::size_t at = 0; const std::string& text : wanted) {
        at = calls.find(text, at);
        ASSERT_NE(at, std::string::npos) << text << " in\n" << calls;
    }
}

TEST(Faults, HitTheCallAskedForAndOthersNot) {
    installActor();
    writeFile("\\MMCMemory\\f", "x");
    driver().addFault({"CreateFileW", "actor.exe", 2, 1});
    EXPECT_EQ(run("hold \\MMCMemory\\f"), 0U);
    EXPECT_EQ(run("hold \\MMCMemory\\f"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(run("hold \\MMCMemory\\f"), 0U);
    EXPECT_EQ(driver().faults().at(0).hits, 1U);
    driver().clearFaults();
    driver().addFault({"CreateFileW", "Actor.exe", 0, 0, 2, true});
    EXPECT_EQ(run("hold \\MMCMemory\\f hold \\MMCMemory\\g"), ERROR_ACCESS_DENIED);
    driver().clearFaults();
    driver().addFault({"EventModify", "Actor.exe", 0, 1, 2, false, panel::FaultAction::hold});
    const auto held = driver().start(actor, "set first set second");
    const auto signals = [] { return driver().status().signals.size(); };
    EXPECT_EQ(driver().waitForExit(held, 60000), std::nullopt); // time goes on
    EXPECT_EQ(signals(), 1U);
    EXPECT_EQ(driver().status().processes.at(0).calls.at(0).call.substr(0, 15), "EventModify[2](");
    EXPECT_EQ(driver().faults().at(0).hits, 1U);
    driver().addFault({"EventModify", "Actor.exe", 0, 1, 2}); // applies when the call goes on
    driver().releaseCalls();
    driver().addFault({"EventModify", "Actor.exe", 0, 1, 2, false, panel::FaultAction::hold}); // too late for this call
    EXPECT_EQ(driver().waitForExit(held, 60000), 0U);
    EXPECT_EQ(signals(), 1U);
    EXPECT_EQ(driver().faults().at(0).hits, 0U);
    EXPECT_EQ(driver().faults().at(1).hits, 1U);
    EXPECT_THROW(driver().addFault({"Sleep", ""}), std::runtime_error);
    EXPECT_THROW(driver().addFault({"Slep", ""}), std::runtime_error);
}
