// Every platform call from a start to its end fails in turn, once: the helper ends or reaches its loop, and one clean
// start later the panel is as if nothing had happened, except for what stands in KnownLosses.h.
//
// The clean start follows an orderly switching off, which makes up for what was not flushed; where flushing itself has
// failed it follows at once.
//
// PANEL_SWEEP=all takes every call; otherwise a sample. The calls are dealt out to several tests that can run at once.
#include "platform/panel/Functions.h"
#include "tests/scenario/KnownLosses.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

constexpr std::size_t shards = 4;
constexpr std::size_t sampleStep = 9;

using Tree = std::map<std::string, std::string>;

struct Call {
    std::string function;
    std::uint32_t start = 0; // of the helper
    std::uint32_t thread = 0;
    std::uint32_t call = 0;
    std::string arguments;
    std::uint32_t occurrence = 1; // among the calls with the same arguments
    std::uint32_t occurrences = 1; // of such calls
};

// "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms"
Call parse(const std::string& line) {
    Call call;
    char function[64] = {};
    if (std::sscanf(line.c_str(), " %*u TarvexHelper.exe#%u t%u %63[A-Za-z_][%u]", &call.start, &call.thread, function,
                    &call.call) != 4)
        return {};
    call.function = function;
    call.arguments = line.substr(line.find('(') + 1);
    call.arguments.resize(call.arguments.rfind(") = "));
    return call;
}

bool canFail(const Call& call) {
    const auto function = panel::functionNamed(call.function);
    return function && panel::facts(*function).canFail;
}

void prepare(ScenarioPanel& panel, Start start) {
    if (start == Start::fromDisk) {
        panel.plugDisk("Hard Disk");
        return;
    }
    panel.install();
    panel.write("\\MMCMemory\\_rm_old.exe", "left behind");
    panel.write("\\NANDFlash\\ZentrixHMI\\ZentrixHMICE.exe", "runtime");
    panel.write("\\NANDFlash\\ZentrixHMI\\_backup_ZentrixHMICE.exe", "backup");
    panel.write("\\MMCMemory\\Tarvex\\config.xml",
                R"(<?xml version="1.0" encoding="UTF-8"?><OrvaTarvex Version="1"><Settings><Parameters LogLevel="3"/>)"
                R"(<CleanupDirectories><Directory Name="\MMCMemory"/></CleanupDirectories></Settings></OrvaTarvex>)");
}

void startAsBefore(ScenarioPanel& panel, Start start) {
    const char* disk = "\\Hard Disk\\Tarvex\\TarvexHelper.exe";
    const bool again = start == Start::fromDisk && panel.exists(disk);
    if (again || panel.exists(ScenarioPanel::helper))
        panel.driver().start(again ? disk : ScenarioPanel::helper);
}

void endRun(ScenarioPanel& panel, bool listens = true) {
    if (panel.settlesInLoop()) // or has left it, and waits for the thread that is busy with the disk
        panel.driver().advance(1000);
    if (panel.settlesInLoop() && listens)
        panel.terminate();
    for (const panel::EndedStatus& ended : panel.driver().status().ended)
        EXPECT_LE(ended.exitCode, 1U) << ended.name;
}

std::size_t failedProcesses(ScenarioPanel& panel) {
    const auto ended = panel.driver().status().ended;
    return static_cast<std::size_t>(
        std::count_if(ended.begin(), ended.end(), [](const panel::EndedStatus& each) { return each.exitCode == 1; }));
}

// Modules without readable settings say so, and are off; a watch over devices that cannot go on says why. The helper
// lives on.
std::size_t seriousErrors(ScenarioPanel& panel) {
    std::vector<std::string> lines = panel.errors();
    std::erase_if(lines, [](const std::string& line) {
        return line.ends_with("Module;settings error") || line == "ERROR;Failed to cleanup zentrix" ||
               line == "ERROR;Load coredll.dll failed" || line.starts_with("ERROR;Get address of ") ||
               line == "ERROR;Generic Exception" || line == "ERROR;Request device notifications failed";
    });
    return lines.size();
}

Tree endState(ScenarioPanel& panel, Start start, bool afterReboot = true) {
    panel.driver().clearFaults();
    if (afterReboot)
        panel.reboot();
    startAsBefore(panel, start);
    endRun(panel);
    panel.panel().cut(); // what counts of the registry is what is left then
    Tree state = panel.tree("\\");
    state.merge(panel.registry());
    return state;
}

std::string differences(const Tree& expected, const Tree& found) {
    std::ostringstream text;
    for (const auto& [name, content] : expected)
        if (!found.contains(name))
            text << '-' << name << ' ';
        else if (found.at(name) != content)
            text << '~' << name << ' ';
    for (const auto& [name, content] : found)
        if (!expected.contains(name))
            text << '+' << name << ' ';
    std::string result = text.str();
    if (!result.empty())
        result.pop_back();
    return result;
}

// `HKEY_LOCAL_MACHINE, "init", 0x800` -> that is what 0x800 stands for, and no argument of its own
void nameOpenedKey(Call& call, std::map<std::string, std::string>& names) {
    const auto last = call.arguments.rfind(", 0x");
    if (last == std::string::npos)
        return; // not opened
    const std::string handle = call.arguments.substr(last + 2);
    call.arguments.resize(last);
    names[handle] = call.arguments;
}

std::vector<Call> recordedCalls(Start start, Tree& undisturbed) {
    ScenarioPanel panel;
    prepare(panel, start);
    panel.driver().setTracing(true);
    startAsBefore(panel, start);
    EXPECT_TRUE(panel.reachesLoop());
    panel.terminate();
    std::vector<Call> calls;
    std::map<std::string, std::string> names; // by handle: what is read, written and listed is known by its name
    for (const std::string& line : panel.trace()) {
        Call call = parse(line);
        const std::string handle = call.arguments.substr(0, call.arguments.find(','));
        if (call.function == "CreateFileW" || call.function == "FindFirstFileW")
            names[line.substr(line.rfind("= ") + 2)] = handle;
        else if (call.function == "RegOpenKeyExW" || call.function == "RegCreateKeyExW")
            nameOpenedKey(call, names);
        else if (names.contains(handle))
            call.arguments.replace(0, handle.size(), names.at(handle));
        if (!canFail(call))
            continue;
        for (Call& former : calls)
            if (former.function == call.function && former.start == call.start && former.arguments == call.arguments) {
                ++former.occurrences;
                ++call.occurrence;
                ++call.occurrences;
            }
        calls.push_back(call);
    }
    EXPECT_EQ(panel.errors(), std::vector<std::string>{});
    undisturbed = endState(panel, start);
    return calls;
}

// A row that no call meets any more says something that is no longer true.
void expectEachLossToBeOfACall(Start start, const std::vector<Call>& calls) {
    for (const KnownLoss& loss : knownLosses)
        EXPECT_TRUE(loss.start != start || std::any_of(calls.begin(), calls.end(),
                                                       [&](const Call& call) {
                                                           return isMeant(loss, start, call.start, call.function,
                                                                          call.arguments, call.occurrence,
                                                                          call.occurrences);
                                                       }))
            << loss.function << '(' << loss.arguments;
}

} // namespace

class FaultSweep : public testing::TestWithParam<std::tuple<Start, std::size_t>> {};

INSTANTIATE_TEST_SUITE_P(Startup, FaultSweep,
                         testing::Combine(testing::Values(Start::fromDisk, Start::inPlace),
                                          testing::Range(std::size_t{0}, shards)));

TEST_P(FaultSweep, AnyFailingCallIsSurvived) {
    const auto [start, shard] = GetParam();
    const char* mode = std::getenv("PANEL_SWEEP");
    const std::size_t step = mode && std::string(mode) == "all" ? 1 : sampleStep;
    Tree undisturbed;
    const std::vector<Call> calls = recordedCalls(start, undisturbed);
    ASSERT_GT(calls.size(), 30U);
    expectEachLossToBeOfACall(start, calls);
    for (std::size_t index = shard * step; index < calls.size(); index += shards * step) {
        const Call& call = calls[index];
        SCOPED_TRACE("{Start::" + std::string(start == Start::fromDisk ? "fromDisk" : "inPlace") + ", " +
                     std::to_string(call.start) + ", \"" + call.function + "\", R\"(" + call.arguments + ")\", call " +
                     std::to_string(call.call));
        ScenarioPanel panel;
        prepare(panel, start);
        panel::Fault fault{call.function, "TarvexHelper.exe", call.start, call.thread, call.call};
        if (call.function == "CreateMsgQueue")
            fault.answer = -1; // with null it never comes to rest, as another test shows
        panel.driver().addFault(fault);
        startAsBefore(panel, start);
        if (call.function == "PostMessageW" && panel.settlesInLoop()) {
            EXPECT_EQ(panel.command(1), 0); // without effect, but the next one counts
        }
        endRun(panel, call.function != "RegisterWindowMessageW"); // which leaves no message that ends it
        EXPECT_EQ(panel.driver().faults().at(0).hits, 1U);
        // exit code 1 is never silent, nor a serious error without it
        EXPECT_EQ(seriousErrors(panel), failedProcesses(panel));
        const std::string until = panel.driver().status().flashWritable ? flashWritable : "";
        EXPECT_EQ(until + differences(undisturbed, endState(panel, start, call.function != "RegFlushKey")),
                  knownLoss(start, call.start, call.function, call.arguments, call.occurrence, call.occurrences));
    }
}
