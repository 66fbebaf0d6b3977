#include "tests/soak/Totals.h"

#include "tests/support/StatisticsFile.h"

#include <utility>

namespace {

constexpr std::uint32_t interval = 300; // s

std::uint32_t numberIn(const std::string& document, const std::string& element) {
    const auto begin = document.find('<' + element + '>');
    return begin == std::string::npos ? 0 : std::stoul(document.substr(begin + element.size() + 2));
}

} // namespace

std::uint64_t Totals::due() const {
    return former.last + interval * 1000;
}

std::string Totals::text() const {
    return statisticsFile(sessionCount, sessionDuration, totalCount, totalDuration);
}

void Totals::adopt(const std::string& found) {
    sessionCount = numberIn(found, "SessionWriteCountLow");
    sessionDuration = numberIn(found, "SessionDuration");
    totalCount = numberIn(found, "TotalWriteCountLow");
    totalDuration = numberIn(found, "TotalDuration");
    known = true;
}

std::string Totals::after(const Updates& updates, std::uint32_t counted, std::uint32_t bootTicks) {
    const bool fresh = updates.process != former.process;
    const std::uint32_t made = updates.count - (fresh ? 0 : former.count);
    const std::uint64_t since = updates.last - former.last;
    former = updates;
    if (made == 0)
        return {};
    if (!fresh && since != std::uint64_t{made} * interval * 1000)
        return std::to_string(made) + " updates of the statistics in " + std::to_string(since) + " ms";
    std::uint32_t seconds = made * interval;
    if (fresh) { // the first update counts the time since boot
        const std::uint64_t first = updates.last - std::uint64_t{made - 1} * interval * 1000;
        seconds = static_cast<std::uint32_t>(bootTicks + first) / 1000 + (made - 1) * interval;
        sessionCount = sessionDuration = 0;
    }
    totalCount += counted - sessionCount;
    sessionCount = counted;
    sessionDuration += seconds;
    totalDuration += seconds;
    return {};
}
