// A model of the eMMC statistics: of the last update, and as "EMMC.xml" must show them.
#pragma once

#include "tests/soak/Conditions.h"

class Totals {
public:
    // `ticks`: at each boot
    Totals(Conditions& of, std::uint32_t ticksAtBoot) : conditions(of), ticks(ticksAtBoot) {}

    void helperEnds(const panel::EndedStatus& helper);
    // Requires that the file shows the updates. The thread of the statistics waits for the next update, and the wait
    // says how many there were.
    void check();

private:
    void count(const panel::CallStatus& wait);

    Conditions& conditions;
    const std::uint32_t ticks;
    bool known = false;
    std::uint32_t knownDuration = 0; // the total when it was known, s
    std::string updater; // process and boot
    std::uint32_t updates = 0; // of this process
    std::uint64_t updated = 0; // panel ms
    std::uint32_t sessionCount = 0;
    std::uint32_t sessionDuration = 0; // s
    std::uint32_t totalCount = 0;
    std::uint32_t totalDuration = 0; // s
};
