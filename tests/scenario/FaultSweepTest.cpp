// Every platform call from a start to its end fails in turn, once. In a whole life of the helper a second sweep lets
// the call and all later ones of its function in that thread fail. The helper ends, and says why, or goes on with
// everything it does; one clean start later the panel is as if nothing had happened. The exceptions stand in
// KnownLosses.cpp.
//
// The clean start follows an orderly switching off, which makes up for what was not flushed; where flushing itself has
// failed it follows at once.
//
// PANEL_SWEEP=all takes every call; otherwise most builds take a sample (tests/CMakeLists.txt). The calls are dealt out
// to several tests that can run at once.
#include "tests/scenario/Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::size_t faultShards = 4;

std::size_t failedProcesses(ScenarioPanel& panel) {
    const auto ended = panel.driver().status().ended;
    return static_cast<std::size_t>(
        std::count_if(ended.begin(), ended.end(), [](const panel::EndedStatus& each) { return each.exitCode == 1; }));
}

// Those that end the helper. What else is logged as an error is what a thread or a module cannot do from then on.
std::size_t seriousErrors(ScenarioPanel& panel) {
    const std::vector<std::string> lines = panel.errors();
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("ERROR;Exception ") || line == "ERROR;Unexpected error";
    }));
}

// Waits are left out, and what answers at once when it is refused and is then asked again: no panel gets past that.
bool canFailForEver(const Call& call) {
    return canFail(call) && !call.function.starts_with("WaitFor") && call.function != "ReadMsgQueue";
}

// As a second instance does, or a loop that gets no more messages.
bool endsAsIfTold(const Call& call) {
    return call.function == "CreateMutexW" || call.function == "GetMessageW";
}

// How often the helper must be told to end; 0: it does not hear.
unsigned commandsToEnd(const Call& call, bool ever) {
    if (call.function == "RegisterWindowMessageW" && (ever || call.arguments.starts_with(R"("ORVATarvexMsg")")))
        return 0;
    if (call.function == "PostMessageW" && call.thread == 1 && call.number == 1) // to itself, that it is to end
        return ever ? 0 : 2;
    return 1;
}

// What the call costs if it fails, or at most what it can cost if the thread's later ones fail as well.
std::string expectedLoss(Story story, const std::vector<Call>& calls, const Call& call, bool ever) {
    std::string loss = knownLoss(knownLosses, story, call);
    if (ever)
        for (const Call& later : calls)
            if (later.function == call.function && later.thread == call.thread && later.number >= call.number)
                loss += ' ' + knownLoss(knownLosses, story, later) + ' ' + knownLoss(lastingLosses, story, later);
    return loss;
}

} // namespace

// The story, whether the call fails for ever, and the shard.
class FaultSweep : public testing::TestWithParam<std::tuple<Story, bool, std::size_t>> {};

INSTANTIATE_TEST_SUITE_P(Startup, FaultSweep,
                         testing::Combine(testing::Values(Story::fromDisk, Story::inPlace), testing::Values(false),
                                          testing::Range(std::size_t{0}, faultShards)));
INSTANTIATE_TEST_SUITE_P(Life, FaultSweep,
                         testing::Combine(testing::Values(Story::life), testing::Bool(),
                                          testing::Range(std::size_t{0}, faultShards)));

TEST_P(FaultSweep, AnyFailingCallIsSurvived) {
    const auto [story, ever, shard] = GetParam();
    const auto [calls, undisturbed, log] = recorded(story, ever ? canFailForEver : canFail);
    expectEachLossToBeOfACall(ever ? lastingLosses : knownLosses, story, calls);
    for (const Call& call : dealt(calls, ever ? "lasting" : "once", shard, faultShards)) {
        SCOPED_TRACE(testing::PrintToString(call));
        SweptPanel panel(story);
        panel::Fault fault{call.function, "TarvexHelper.exe", call.process, call.thread, call.number, ever};
        if (call.function == "CreateMsgQueue")
            fault.answer = -1; // with null it never comes to rest, as another test shows
        panel.driver().addFault(fault);
        const bool livesOn = panel.liveOn();
        panel.end(commandsToEnd(call, ever));
        EXPECT_GE(panel.driver().faults().at(0).hits, 1U);
        // exit code 1 is never silent, nor a serious error without it
        EXPECT_EQ(seriousErrors(panel), failedProcesses(panel));
        if (story == Story::life && !livesOn) {
            EXPECT_EQ(failedProcesses(panel), endsAsIfTold(call) ? 0U : 1U);
        }
        const std::string until = panel.driver().status().flashWritable ? flashWritable : "";
        const Tree found = panel.endState(call.function != "RegFlushKey");
        const std::string lost = until + differences(livesOn ? undisturbed : withoutDeeds(undisturbed), found);
        const std::string expected = expectedLoss(story, calls, call, ever);
        if (ever)
            EXPECT_EQ(beyond(expected, lost), "");
        else
            EXPECT_EQ(lost, expected);
    }
}
