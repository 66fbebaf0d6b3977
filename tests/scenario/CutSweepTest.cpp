// The power goes at every call of a start, and of the end after it, that changes files, the registry or the flash's
// protection, before the call has had its effect. Then the panel is booted: what the registry lists starts, or, as long
// as it lists nothing, a person starts the helper once more, from the disk as long as it is there. When that helper has
// ended, the panel is as if the power had stayed, except for what stands in KnownLosses.cpp.
//
// PANEL_SWEEP=all takes every call; otherwise most builds take a sample (tests/CMakeLists.txt).
#include "tests/scenario/Sweep.h"

#include <gtest/gtest.h>

#include <set>

namespace {

constexpr std::size_t shards = 2;

bool changesThePanel(const Call& call) {
    static const std::set<std::string_view> changing{"CopyFileW",        "CreateDirectoryW", "DeleteFileW",
                                                     "MoveFileW",        "RegCreateKeyExW",  "RegFlushKey",
                                                     "RegSetValueExW",   "RemoveDirectoryW", "SetFileAttributesW",
                                                     "SHCreateShortcut", "WriteFile"};
    if (call.function == "CreateFileW")
        return call.arguments.find(", 0x40000000, ") != std::string::npos;
    if (call.function == "DeviceIoControl")
        return call.arguments.starts_with(R"("\NANDFlash)");
    return changing.contains(call.function);
}

} // namespace

class CutSweep : public testing::TestWithParam<std::tuple<Story, std::size_t>> {};

INSTANTIATE_TEST_SUITE_P(Startup, CutSweep,
                         testing::Combine(testing::Values(Story::fromDisk, Story::inPlace),
                                          testing::Range(std::size_t{0}, shards)));

TEST_P(CutSweep, TheNextStartMakesUpForAnyPowerCut) {
    const auto [story, shard] = GetParam();
    const auto [calls, undisturbed] = recorded(story, changesThePanel);
    expectEachLossToBeOfACall(cutLosses, story, calls);
    for (const Call& call : dealt(calls, "cuts", shard, shards)) {
        SCOPED_TRACE(testing::PrintToString(call));
        SweptPanel panel(story);
        panel.driver().addFault({call.function, "TarvexHelper.exe", call.process, call.thread, call.number, false,
                                 panel::FaultAction::cut});
        EXPECT_TRUE(panel.liveUntilCut());
        EXPECT_EQ(differences(undisturbed, panel.stateAfterCut()), knownLoss(cutLosses, story, call));
    }
}
