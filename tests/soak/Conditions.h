// What has happened to a panel and its helper, as far as it decides what must hold (Invariants.h). The model is small:
// it knows what may end the helper. While a failing call, a refused request or a power cut may have changed more than
// that, only the invariants remain that hold always.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <set>
#include <stdexcept>

// An invariant does not hold.
struct Finding : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void require(bool holds, const std::string& what) {
    if (!holds)
        throw Finding(what);
}

inline constexpr const char* logFiles[] = {"\\MMCMemory\\Tarvex\\helper_log0.txt",
                                           "\\MMCMemory\\Tarvex\\helper_log1.txt"};
inline constexpr std::uint32_t answerLimit = 60000; // ms
inline constexpr std::uint32_t updateInterval = 300000; // ms, of the statistics

bool isWait(const panel::CallStatus& call, std::uint32_t limit); // for one object, with this time-out in ms

struct Conditions {
    explicit Conditions(ScenarioPanel& of) : panel(of) {}

    void look(); // takes the status, and what follows from it
    void boot(); // forgets what was before
    void start(); // of a helper while there is none
    void askToEnd();
    void loseFiles(); // the power was cut

    bool isOn() const;
    const panel::ProcessStatus* helper() const; // the oldest that runs; null: there is none
    // A device that is gone refuses, unless it blocks or delays.
    panel::Behaviour::Kind kindOf(const char* device) const;
    bool isHindering() const; // the backlight
    bool isAsModelled() const { // each call of the helper does what it should, and soon
        return !disturbed && !hindered && !told;
    }

    ScenarioPanel& panel;
    panel::PanelStatus status;
    bool held = false; // a call was held, and the log may have outgrown its limit since
    bool tampered = false; // since the last clean boot: files and registry may have lost what docs/reliability.md lists
    bool mayForget = true; // the totals of the statistics may have begun at 0 since they were known
    bool uncounted = false; // an update of the statistics may have been lost

    // Of this boot.
    std::uint32_t boots = 0;
    std::set<std::string> passing; // helpers that are to end by themselves
    std::set<std::string> killed;
    bool mayStayDim = false; // a helper could not restore the screen
    std::map<std::string, std::uint32_t> hits; // of each fault
    std::streamoff rested = 0; // bytes of the trace until the helper was first at rest
    std::uint32_t reloads = 0; // each may leave a touch thread

    // Of this helper.
    bool disturbed = false; // a call has failed
    bool holds = false; // at present: a fault holds a call of one of its threads
    bool blocked = false; // at present: its main thread stands in a call that blocks or is held, or waits for one
    bool hindered = false; // the backlight refuses, or a thread stands in such a call, so it may end with 1
    bool told = false; // to end
    std::uint64_t toldAt = 0; // panel ms
    bool busy = false; // with a disk, when it was told
};
