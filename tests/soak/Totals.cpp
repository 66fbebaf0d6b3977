#include "tests/soak/Totals.h"

#include "tests/support/StatisticsFile.h"

#include <algorithm>
#include <utility>

using panel::Behaviour;

namespace {

std::uint32_t numberIn(const std::string& document, const std::string& element) {
    return std::stoul(document.substr(document.find('<' + element + '>') + element.size() + 2));
}

} // namespace

// It may have ended within an update, or after one that nobody has seen.
void Totals::helperEnds(const panel::EndedStatus& helper) {
    known &= helper.exitCode == 0 && helper.time < updated + updateInterval;
    conditions.mayForget |= helper.exitCode != 0;
}

void Totals::check() {
    known &= !std::exchange(conditions.uncounted, false);
    const auto kind = conditions.kindOf("SHC1");
    if (conditions.disturbed || conditions.holds || kind == Behaviour::Kind::block || kind == Behaviour::Kind::delay)
        return;
    ScenarioPanel& panel = conditions.panel;
    const panel::ProcessStatus* const helper = conditions.helper();
    if (helper) {
        const auto wait = std::find_if(helper->calls.begin(), helper->calls.end(),
                                       [](const auto& each) { return isWait(each, updateInterval); });
        require(wait != helper->calls.end() || conditions.blocked || conditions.told || !panel.loopRuns(),
                "nobody waits for the next update");
        if (wait == helper->calls.end())
            return;
        count(*wait);
    }
    const std::string file = panel.exists(statisticsPath) ? panel.read(statisticsPath) : "";
    if (!known && helper && file.ends_with("</EMMC>\n")) {
        sessionCount = numberIn(file, "SessionWriteCountLow");
        sessionDuration = numberIn(file, "SessionDuration");
        totalCount = numberIn(file, "TotalWriteCountLow");
        totalDuration = numberIn(file, "TotalDuration");
        require(conditions.mayForget || totalDuration >= knownDuration, "the totals have begun again");
        known = true;
        conditions.mayForget = false;
    }
    if (!known)
        return;
    knownDuration = totalDuration;
    const std::string model = statisticsFile(sessionCount, sessionDuration, totalCount, totalDuration);
    require(file == model, "the statistics are\n" + file + "and not\n" + model);
}

void Totals::count(const panel::CallStatus& wait) {
    const std::string process = std::to_string(conditions.boots) + conditions.helper()->name;
    const bool fresh = process != updater;
    const auto waits = static_cast<std::uint32_t>(std::stoul(wait.call.substr(wait.call.find('[') + 1)));
    const std::uint32_t made = waits - (fresh ? 0 : updates);
    const std::uint64_t since = wait.since - (fresh ? 0 : updated);
    updater = process;
    updates = waits;
    updated = wait.since;
    if (made == 0)
        return;
    std::uint32_t seconds = made * (updateInterval / 1000);
    if (fresh) { // the first update counts the time since boot
        const std::uint64_t later = (made - 1) * std::uint64_t{updateInterval};
        seconds = static_cast<std::uint32_t>(ticks + since - later) / 1000 + static_cast<std::uint32_t>(later / 1000);
        sessionCount = sessionDuration = 0;
    } else {
        require(!known || since == made * std::uint64_t{updateInterval}, "an update comes at the wrong time");
    }
    const bool counts = conditions.kindOf("SHC1") == Behaviour::Kind::answer;
    const std::uint32_t counted = counts ? conditions.panel.panel().devices().state("SHC1").values[0] : 0;
    totalCount += counted - sessionCount;
    sessionCount = counted;
    sessionDuration += seconds;
    totalDuration += seconds;
}
