#include "tests/soak/Invariants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

constexpr std::uint32_t endLimit = 100000; // ms; the helper waits for up to four threads, 20 s each
constexpr std::size_t logLimit = 102400 + 400; // bytes, and a line more of each thread
constexpr std::uint32_t handlesOfWork = 11; // of both modules, and of work with a disk
const std::vector<std::uint32_t> fullLight{200, 1, 200, 1};
constexpr std::uint32_t crashed = 0xC0000005;
constexpr std::uint64_t longestWait = 20000; // ms, of the helper's end for a thread

bool isHelper(const std::string& process) {
    return process.starts_with("TarvexHelper.exe#");
}

bool hasReason(const ScenarioPanel& panel) {
    const Lines lines = panel.lastLines(60);
    return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("ERROR;Exception ") || line == "ERROR;Unexpected error";
    });
}

} // namespace

void Invariants::boot() {
    ended.clear();
    traced = 0;
    programs = 0;
    base = {};
}

bool Invariants::check() {
    panel::Driver& driver = conditions.panel.driver();
    driver.settle();
    conditions.look();
    if (conditions.isOn() && conditions.helper()) {
        const auto settled = [this] {
            conditions.look();
            return !conditions.isOn() || conditions.blocked || !conditions.helper() ||
                   (!conditions.told && conditions.panel.loopRuns());
        };
        const bool settles = driver.waitUntil(settled, conditions.told ? endLimit : ScenarioPanel::limit);
        // A failing call may have cost the request to end, but then the loop runs.
        require(settles || (conditions.told && conditions.disturbed && conditions.panel.loopRuns()),
                conditions.told ? "the helper does not end" : "neither in the loop nor ended");
        conditions.told &= settles; // else it has not got the message
        if (conditions.isOn() && !conditions.told && !conditions.blocked && conditions.panel.loopRuns())
            checkAnswer();
        driver.settle(); // other threads may still be at work
    }
    if (!conditions.isOn())
        return false;
    conditions.look();
    checkEnds();
    checkTrace();
    if (conditions.helper() && conditions.rested == 0)
        conditions.rested = traced;
    checkLog();
    checkUse();
    totals.check();
    require(!testing::UnitTest::GetInstance()->Failed(), "output of a program, or a failure above");
    return true;
}

void Invariants::checkAnswer() {
    const auto answer = conditions.panel.send("ORVATarvexMsg", 99, 0, answerLimit);
    conditions.look();
    if (!conditions.isOn() || conditions.blocked || !conditions.panel.loopRuns())
        return;
    require(answer && (answer == 1 || conditions.disturbed), "the helper does not answer");
    conditions.hindered = conditions.isHindering();
}

void Invariants::checkEnds() {
    const Conditions& now = conditions;
    for (const panel::EndedStatus& each : now.status.ended) {
        if (!isHelper(each.name) || !ended.insert(each.name).second || now.killed.contains(each.name))
            continue;
        const bool late = now.told && now.busy && each.time >= now.toldAt + longestWait; // for the thread of the disks
        // Or one that is held has the mutex.
        const bool second = now.passing.contains(each.name) || (now.holds && now.helper());
        require((each.exitCode == 0 && (now.told || now.disturbed || second)) ||
                    (each.exitCode == 1 && (late || now.hindered || now.disturbed)) ||
                    (each.exitCode == crashed && late),
                each.name + " has ended with " + std::to_string(each.exitCode) + " without a reason");
        require(each.exitCode != 1 || now.disturbed || now.tampered || hasReason(now.panel),
                each.name + " says not why it has ended with 1");
        require(each.exitCode != 0 || !now.told || now.mayStayDim || now.status.backLight == fullLight,
                "the screen stays dim");
        totals.helperEnds(each);
    }
}

// No call may use a handle that was closed. What a failed call has given, null or -1, may be used, and partitions may
// be sought on a disk that has gone. A request for a click that waits for 20 s finds its driver closed by the touch
// buzzer.
void Invariants::checkTrace() {
    std::ifstream trace(conditions.panel.panel().directory() / "run/trace");
    trace.seekg(traced);
    const auto has = [](const std::string& text, const char* word) { return text.find(word) != std::string::npos; };
    for (std::string line; std::getline(trace, line); traced = trace.tellg()) {
        const std::string result = line.substr(std::min(line.rfind(") = "), line.size()));
        require((!has(result, " error 6") && !(result == ") = 6" && has(line, " Reg"))) || has(result, "fault") ||
                    !has(line, "TarvexHelper") || has(line, "null") || has(line, "(-1") ||
                    has(line, " FindFirstPart") || has(line, " FindNextPart") ||
                    (has(line, ", 0x1012ef4, ") && has(result, " after ")),
                "a closed handle: " + line);
    }
}

void Invariants::checkLog() {
    bool outgrown = false;
    for (const char* file : logFiles)
        outgrown |= conditions.panel.exists(file) && conditions.panel.read(file).size() > logLimit;
    require(conditions.held || !outgrown, "the log has outgrown its limit");
    conditions.held &= outgrown;
}

Use Invariants::use() {
    const auto count = [this](const auto& processes) {
        for (const auto& each : processes)
            if (each.name.starts_with("Actor.exe#"))
                programs = std::max(programs, static_cast<std::uint32_t>(std::stoul(each.name.substr(10))));
    };
    count(conditions.status.ended);
    count(conditions.status.processes);
    const panel::ProcessStatus* const helper = conditions.helper();
    if (!helper)
        return {};
    return {helper->name, helper->handles, helper->threads, programs, conditions.reloads};
}

void Invariants::checkUse() {
    const Use now = use();
    if (now.process.empty() || !conditions.isAsModelled() || !conditions.panel.loopRuns())
        return;
    if (base.process != now.process)
        base = now;
    require(now.handles <= base.handles + 2 * (now.programs - base.programs) + handlesOfWork,
            std::to_string(now.handles) + " handles after " + std::to_string(base.handles));
    require(now.threads <= base.threads + 2 + now.reloads - base.reloads,
            std::to_string(now.threads) + " threads after " + std::to_string(base.threads));
}
