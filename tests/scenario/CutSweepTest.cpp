// The power goes at every call of a start, of a whole life and of their ends that changes files, the registry or the
// flash's protection, before the call has had its effect, with every storage policy of the panel. Where a policy loses
// what is not closed, the call that closes a file counts, too; with "torn" a WriteFile has had its effect, and each
// number of sectors that makes a difference is tried (to the log: at the calls that close a file). Then the panel is
// booted: what the registry lists starts, or, as long as it lists nothing, a person starts the helper once more, from
// the disk as long as it is there. When that helper has ended, the panel is as if the power had stayed, except for what
// stands in KnownLosses.cpp.
//
// Many cuts leave the same. A panel whose files, registry and count are those of one before is not booted again: it
// would come to the same state.
//
// PANEL_SWEEP=all takes every call; otherwise most builds take a sample (tests/CMakeLists.txt).
#include "tests/scenario/Sweep.h"

#include <gtest/gtest.h>

#include <set>

using panel::StoragePolicy;

namespace {

constexpr std::size_t shards = 2;

bool changesThePanel(const Call& call) {
    static const std::set<std::string_view> changing{
        "CopyFileW",          "CreateDirectoryW", "DeleteFileW", "MoveFileW",      "RegCreateKeyExW",
        "RegDeleteKeyW",      "RegDeleteValueW",  "RegFlushKey", "RegSetValueExW", "RemoveDirectoryW",
        "SetFileAttributesW", "SHCreateShortcut", "WriteFile"};
    if (call.function == "CreateFileW")
        return call.arguments.find(", 0x40000000, ") != std::string::npos;
    if (call.function == "DeviceIoControl")
        return call.arguments.starts_with(R"("\NANDFlash)");
    return changing.contains(call.function);
}

bool changesOrCommits(const Call& call) {
    return changesThePanel(call) || call.commits;
}

// The document that the call writes or closes has all its sectors.
bool isWhole(const ScenarioPanel& panel, const Call& call) {
    return (call.function == "WriteFile" || call.function == "CloseHandle") && panel.exists(call.firstText()) &&
           panel.read(call.firstText()).ends_with(">\n");
}

// The log is as long as the policy says, and holds nothing but what was written. Of the present log file, whose end
// alone is not committed, only the sectors that stay hold more.
void expectLog(StoragePolicy policy, std::uint32_t sectors, const Call& call, const std::string& written,
               const std::string& found) {
    EXPECT_TRUE(written.starts_with(found));
    if (policy == StoragePolicy::kept)
        EXPECT_EQ(found.size(), call.logged);
    else if (sectors == 0)
        EXPECT_EQ(found.size(), call.committed);
    else
        EXPECT_TRUE(found.size() >= call.committed && found.size() <= call.committed + std::size_t{512} * sectors)
            << found.size() << " of " << call.committed;
}

} // namespace

namespace panel {

void PrintTo(StoragePolicy policy, std::ostream* stream) {
    *stream << storageNames[static_cast<std::size_t>(policy)];
}

} // namespace panel

class CutSweep : public testing::TestWithParam<std::tuple<Story, StoragePolicy, std::size_t>> {};

INSTANTIATE_TEST_SUITE_P(All, CutSweep,
                         testing::Combine(testing::Values(Story::fromDisk, Story::inPlace, Story::life),
                                          testing::Values(StoragePolicy::kept, StoragePolicy::closed,
                                                          StoragePolicy::torn),
                                          testing::Range(std::size_t{0}, shards)));

TEST_P(CutSweep, TheNextStartMakesUpForAnyPowerCut) {
    const auto [story, policy, shard] = GetParam();
    const Recording undisturbed = recorded(story, policy == StoragePolicy::kept ? changesThePanel : changesOrCommits);
    expectEachLossToBeOfACall(cutLosses, story, undisturbed.calls);
    const Tree expected = withoutDeeds(undisturbed.endState);
    std::map<Tree, std::string> lost; // by what the cut has left
    unsigned cuts = 0;
    for (const Call& call : dealt(undisturbed.calls, "cuts", shard, shards)) {
        std::pair<Tree, std::string> before;
        for (std::uint32_t sectors = 0; sectors == 0 || policy == StoragePolicy::torn; ++sectors) {
            SCOPED_TRACE(testing::PrintToString(call) + ", sectors: " + std::to_string(sectors));
            SweptPanel panel(story);
            panel.panel().setStorage(policy);
            panel.driver().addFault({call.function, "TarvexHelper.exe", call.process, call.thread, call.number, false,
                                     panel::FaultAction::cut, 0, sectors});
            EXPECT_TRUE(panel.liveUntilCut());
            ++cuts;
            const std::string log = panel.logText();
            expectLog(policy, sectors, call, undisturbed.log, log);
            const Tree left = panel.left();
            const bool stayed = before == std::pair(left, call.commits ? log : "");
            if (stayed) { // all sectors, but perhaps for the log's at a call that closes no file
                EXPECT_TRUE(!call.commits || log.size() == call.logged);
                break;
            }
            before = {left, call.commits ? log : ""};
            const bool whole = sectors > 0 && isWhole(panel, call);
            const auto [loss, isNew] = lost.try_emplace(left);
            if (isNew)
                loss->second = differences(expected, withoutDeeds(panel.stateAfterCut()));
            EXPECT_EQ(loss->second, whole ? "" : knownLoss(cutLosses, story, call));
        }
    }
    RecordProperty("cuts", static_cast<int>(cuts));
    RecordProperty("boots", static_cast<int>(lost.size()));
}
