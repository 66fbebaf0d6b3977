// What must hold after each step of a random life (docs/reliability.md).
#pragma once

#include "tests/soak/Totals.h"

// What a helper uses.
struct Use {
    std::string process;
    std::uint32_t handles = 0;
    std::uint32_t threads = 0;
    std::uint32_t programs = 0; // that disks have started
    std::uint32_t reloads = 0;
};

class Invariants {
public:
    Invariants(Conditions& of, std::uint32_t ticksAtBoot) : conditions(of), totals(of, ticksAtBoot) {}

    void boot(); // forgets what was before
    // Throws a Finding if an invariant does not hold. Returns false if a fault has cut the power.
    bool check();
    // Of the helper at present.
    Use use();

    std::set<std::string> ended; // helpers of this boot

private:
    void checkAnswer();
    void checkEnds();
    void checkTrace();
    void checkLog();
    void checkUse();

    Conditions& conditions;
    Totals totals;
    std::streamoff traced = 0; // bytes of the trace that were looked at
    std::uint32_t programs = 0; // of this boot
    Use base;
};
