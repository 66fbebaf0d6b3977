#include "tests/soak/Life.h"

#include "platform/panel/Functions.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/OwnMemory.h"
#include "tests/support/SettingsFile.h"
#include "tests/support/StatisticsFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using panel::Behaviour;

namespace {

constexpr const char* onDisk = "\\Hard Disk\\Tarvex\\TarvexHelper.exe";
constexpr const char* logFiles[] = {"\\MMCMemory\\Tarvex\\helper_log0.txt", "\\MMCMemory\\Tarvex\\helper_log1.txt"};
constexpr const char* drivers[] = {"BKL1", "BZR1", "SHC1", "tags"};
constexpr std::uint32_t endLimit = 100000; // ms; the helper waits for up to four threads, 20 s each
constexpr std::uint64_t halfADay = 43200000; // ms
constexpr std::uint32_t interval = 300; // s, of the statistics
constexpr std::size_t memoryOfRest = 8; // KB
constexpr std::size_t logLimit = 102400 + 400; // bytes, and a line more of each thread
constexpr std::uint32_t handlesOfWork = 11; // of both modules, and of work with a disk
const std::vector<std::uint32_t> fullLight{200, 1, 200, 1};
constexpr std::uint32_t crashed = 0xC0000005;
constexpr std::uint64_t longestWait = 20000; // ms, of the helper's end for a thread

bool isHelper(const std::string& process) {
    return process.starts_with("TarvexHelper.exe#");
}

bool isWait(const panel::CallStatus& each, const char* limit) {
    return each.call.starts_with("WaitForSingleObject[") && each.call.ends_with(limit);
}

std::uint32_t numberIn(const std::string& document, const std::string& element) {
    return std::stoul(document.substr(document.find('<' + element + '>') + element.size() + 2));
}

// The answers that a command may have, as digits.
std::string expected(const std::string& message, std::uint64_t code, std::int64_t argument) {
    if (message.find("Tarvex") == std::string::npos)
        return "0"; // of the system
    if (code == 1 && message != "ORVATarvexMsg")
        return "02"; // settings that were read again
    if (message != "ORVATarvexScreenSaverMsg" || code == 0 || code > 5)
        return "1";
    return (code == 3 && argument <= 0) || (code == 4 && (argument < 0 || argument > 255)) ? "3" : "0";
}

bool hasReason(const ScenarioPanel& panel) {
    const Lines lines = panel.lastLines(60);
    return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("ERROR;Exception ") || line == "ERROR;Unexpected error";
    });
}

// It may cost a file its content.
bool isOfFiles(const std::string& function) {
    return function.find("File") != std::string::npos || function == "CloseHandle";
}

std::string textOf(const panel::Fault& fault) {
    return fault.function + " t" + std::to_string(fault.thread) + " call " + std::to_string(fault.call);
}

void require(bool holds, const std::string& what) {
    if (!holds)
        throw Finding(what);
}

} // namespace

Life::Life(std::uint32_t ticksAtBoot, panel::StoragePolicy policy) : panel(ticksAtBoot), ticks(ticksAtBoot) {
    panel.panel().setStorage(policy);
    panel.install();
    panel.put("\\Temp\\Actor.exe", programFile("Actor"));
    bootCleanly();
    start(false); // the second start finds the registry as all later ones do
    check();
    end();
    check();
    started = places(2);
    start(true);
    check();
    installed = places(3);
}

void Life::take(const std::function<void(Life&)>& step) {
    look();
    try {
        step(*this);
    } catch (const Finding&) {
        throw;
    } catch (const std::runtime_error&) {
        if (isOn()) // no power cut by a fault
            throw;
    }
    check();
}

void Life::rest() {
    panel.pass(halfADay);
    look();
    const std::size_t before = helper() ? ownMemory(helper()->hostPid) : 0;
    const std::uint32_t handles = helper() ? helper()->handles : 0;
    const std::uint32_t threads = helper() ? helper()->threads : 0;
    panel.pass(halfADay);
    look();
    require(!helper() || disturbed || ownMemory(helper()->hostPid) <= before + memoryOfRest,
            "half a day without events costs memory");
    require(!helper() || disturbed || hindered || (helper()->handles == handles && helper()->threads == threads),
            "half a day without events costs handles or threads");
}

void Life::tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted) {
    if (!panel.loopRuns())
        return;
    reloads += code == 1 && message == "ORVATarvexBuzzerMsg";
    if (posted)
        return panel::postMessage(panel::findWindow("ORVATarvexHelper"), message, code, argument);
    const auto answer = panel.send(message.c_str(), code, argument, answerLimit);
    look();
    if (!told && !disturbed && !hindered && isOn())
        require(answer && expected(message, code, argument).find(std::to_string(*answer)) != std::string::npos,
                message + " has the answer " + (answer ? std::to_string(*answer) : "none"));
}

bool Life::isIdle() {
    look();
    return !helper();
}

void Life::start(bool fromDisk) {
    if (fromDisk) {
        const auto disks = panel.panel().disks().volumes();
        if (std::none_of(disks.begin(), disks.end(), [](const auto& each) { return each.name == "Hard Disk"; }))
            panel.plugDisk("Hard Disk");
        if (!panel.exists(onDisk))
            return;
    }
    if (!helper()) {
        disturbed = hindered = told = busy = false;
        rested = 0;
    }
    const bool second = helper();
    if (second && holds) // perhaps before it has the mutex, so it would be the second one
        passing.insert(helper()->name);
    const auto process = panel.driver().start(fromDisk ? onDisk : ScenarioPanel::helper);
    if (fromDisk || second)
        passing.insert(process.name);
    if (fromDisk)
        panel.driver().advance(2000); // until it has handed over
}

void Life::end() {
    if (!panel.loopRuns())
        return;
    look();
    if (!told)
        toldAt = status.time;
    busy =
        helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), [](const auto& each) {
            return each.call.starts_with("Sleep[") || isWait(each, ", 4294967295)"); // for a disk, or for its program
        });
    told = true;
    panel.send("ORVATarvexMsg", 1, 0, answerLimit);
}

void Life::kill() {
    if (!helper())
        return;
    killed.insert(helper()->name);
    mayStayDim = mayForget = true;
    panel.driver().kill(helper()->name);
}

void Life::boot(bool cut, std::uint32_t sectors) {
    tampered |= cut;
    mayForget |= cut;
    if (cut)
        panel.panel().cut(panel.panel().options().storage == panel::StoragePolicy::torn ? sectors : 0);
    panel.reboot();
    startListed();
}

void Life::startListed() {
    ++boots;
    ended.clear();
    passing.clear();
    killed.clear();
    hits.clear();
    reloads = 0;
    traced = rested = 0;
    base = use = {};
    disturbed = hindered = told = busy = mayStayDim = false;
    panel.driver().setTracing(true);
    if (panel.driver().startInit().empty()) {
        require(tampered || undisturbed.empty(), "the registry does not start the helper");
        panel.driver().start(ScenarioPanel::helper);
    }
}

void Life::plug(const panel::Disk& disk) {
    try {
        panel.panel().plug(disk);
    } catch (const std::runtime_error&) { // the name is taken, or there is no room
    }
}

void Life::configure(const std::string& content, bool good) {
    tampered |= !good;
    panel.write(settingsPath, content);
    panel.write("\\MMCMemory\\_rm_old.exe", "left behind");
}

std::set<Life::Place> Life::places(std::uint32_t process) const {
    std::set<Place> found;
    for (const TracedCall& call : panel.calls()) {
        const auto function = panel::functionNamed(call.function);
        if (call.process == process && function && panel::facts(*function).canFail)
            found.emplace(call.thread, call.function, call.number);
    }
    return found;
}

// What the threads that the helper has now have called since it was first at rest, with the numbers of the next calls.
std::set<Life::Place> Life::next() {
    std::map<std::pair<std::uint32_t, std::string>, std::uint32_t> numbers;
    for (const TracedCall& call : tracedCalls(panel.panel().directory(), static_cast<std::uintmax_t>(rested))) {
        const auto function = panel::functionNamed(call.function);
        if (helper()->name == call.program + '#' + std::to_string(call.process) && panel::facts(*function).canFail)
            numbers[{call.thread, call.function}] = call.number + 1;
    }
    std::set<Place> found;
    for (const panel::CallStatus& each : helper()->calls) {
        const std::string standsIn = each.call.substr(0, each.call.find('['));
        for (const auto& [key, number] : numbers)
            if (key.first == each.thread) // in the call itself it stands already
                found.emplace(key.first, key.second, number + (key.second == standsIn));
    }
    return found;
}

void Life::add(panel::Fault fault, std::uint32_t draw, bool fresh, bool fromDisk) {
    look();
    std::set<Place> calls = fromDisk ? installed : started;
    if (helper() && !fresh && rested)
        calls = next();
    if (calls.empty() || panel.driver().faults().size() >= 8)
        return;
    std::tie(fault.thread, fault.function, fault.call) =
        *std::next(calls.begin(), static_cast<std::ptrdiff_t>(draw % calls.size()));
    // These are repeated at once, so they would never come to rest.
    fault.ever &= !fault.function.starts_with("WaitFor") && fault.function != "ReadMsgQueue";
    if (fault.function == "CreateMsgQueue")
        fault.answer = -1; // with null the thread of the disks never comes to rest
    if (panel.panel().options().storage != panel::StoragePolicy::torn)
        fault.sectors = 0;
    panel.driver().addFault(fault);
    std::printf("  fault %s\n", textOf(fault).c_str());
}

void Life::calm() {
    panel.driver().clearFaults();
    hits.clear();
    const panel::Devices devices = panel.panel().devices();
    for (const char* device : drivers)
        devices.setBehaviour(device, {});
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags", "PowerManager"})
        devices.setPresent(device, true);
}

void Life::bootCleanly() {
    calm();
    panel.driver().settle(); // a helper whose held call goes on would still write its files
    for (const panel::Disk& disk : panel.panel().disks().list())
        panel.panel().disks().unplug(disk.device);
    panel.write(saverSettingsPath, saverSettings(true, 60000, 0));
    panel.write(buzzerSettingsPath, buzzerSettings(true, 3400));
    if (tampered)
        configure(settingsFile(2, {"\\MMCMemory"}), true);
    boot(false, 0);
    check();
    end();
    check();
    require(!helper() && !ended.empty(), "the helper does not end");
    require(std::any_of(std::begin(logFiles), std::end(logFiles),
                        [this](const char* file) {
                            return panel.exists(file) && panel.read(file).ends_with(";INFO;Helper terminated\n");
                        }),
            "no log ends with the helper's end");
    const auto found = state();
    if (undisturbed.empty())
        undisturbed = found;
    const auto& measure = undisturbed;
    for (const auto& [one, other] : {std::pair(&measure, &found), {&found, &measure}})
        for (const auto& [name, content] : *one)
            require(other->contains(name) && other->at(name) == content, "a clean boot does not restore " + name);
    tampered = false;
}

std::map<std::string, std::string> Life::state() const {
    auto state = panel.tree("\\");
    state.merge(panel.registry());
    state.erase(statisticsPath + 1);
    // No start checks this value, so a call that has failed may have cost it.
    state.try_emplace("HKEY_CLASSES_ROOT\\.osr\\ShellNew|NullFile", "REG_SZ ");
    return state;
}

// ---- what must hold

bool Life::isOn() {
    return panel.driver().isOn();
}

const panel::ProcessStatus* Life::helper() const {
    for (const panel::ProcessStatus& process : status.processes)
        if (isHelper(process.name))
            return &process;
    return nullptr;
}

Behaviour::Kind Life::kindOf(const char* device) {
    const panel::DeviceState state = panel.panel().devices().state(device);
    if (!state.behaviours.empty()) // also of requests that began before the device went
        return state.behaviours.begin()->second.kind;
    return state.present ? Behaviour::Kind::answer : Behaviour::Kind::refuse;
}

bool Life::isHindering() {
    return kindOf("BKL1") == Behaviour::Kind::refuse || !panel.panel().devices().has("BKL1");
}

void Life::look() {
    status = panel.driver().status();
    const auto stands = [this](const std::function<bool(const panel::CallStatus&)>& isSo) {
        return helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), isSo);
    };
    std::vector<panel::Fault> holding;
    for (const panel::Fault& fault : panel.driver().faults()) {
        if (fault.hits > 0 && fault.action == panel::FaultAction::hold)
            holding.push_back(fault);
        else if (fault.hits > hits[textOf(fault)])
            disturbed = true, mayForget |= isOfFiles(fault.function);
        if (fault.hits > 0 && hits[textOf(fault)] == 0)
            std::printf("  hit %s\n", textOf(fault).c_str());
        hits[textOf(fault)] = fault.hits;
    }
    const auto isHeld = [&](const panel::CallStatus& each) {
        return std::any_of(holding.begin(), holding.end(), [&](const panel::Fault& fault) {
            return each.thread == fault.thread &&
                   each.call.starts_with(fault.function + '[' + std::to_string(fault.call) + ']');
        });
    };
    const bool blocks = std::any_of(std::begin(drivers), std::end(drivers),
                                    [this](const char* device) { return kindOf(device) == Behaviour::Kind::block; });
    const auto isStuck = [&](const panel::CallStatus& each) {
        return isHeld(each) || (blocks && (each.call.starts_with("DeviceIoControl[") || each.call.starts_with("TAG_")));
    };
    holds = stands(isHeld);
    held |= holds;
    const bool stuck = stands(isStuck);
    blocked = stuck && helper()->calls[0].thread == 1 &&
              (isStuck(helper()->calls[0]) || !helper()->calls[0].call.starts_with("GetMessageW["));
    hindered |= stuck || isHindering();
    tampered |= disturbed;
    mayStayDim |= disturbed || hindered;
    known &=
        !disturbed && !holds && kindOf("SHC1") != Behaviour::Kind::block && kindOf("SHC1") != Behaviour::Kind::delay;
}

void Life::check() {
    panel.driver().settle();
    look();
    if (isOn() && helper()) {
        const auto settled = [this] {
            look();
            return !isOn() || blocked || !helper() || (!told && panel.loopRuns());
        };
        const bool settles = panel.driver().waitUntil(settled, told ? endLimit : ScenarioPanel::limit);
        // A failing call may have cost the request to end, but then the loop runs.
        require(settles || (told && disturbed && panel.loopRuns()),
                told ? "the helper does not end" : "neither in the loop nor ended");
        told &= settles; // else it has not got the message
        if (isOn() && !told && !blocked && panel.loopRuns())
            checkAnswer();
        panel.driver().settle(); // other threads may still be at work
    }
    if (!isOn()) { // a fault has cut the power
        tampered = mayForget = true;
        known = false;
        panel.reboot();
        startListed();
        return check();
    }
    look();
    checkEnds();
    checkTrace();
    if (helper() && rested == 0)
        rested = traced;
    checkUse();
    checkTotals();
    require(!testing::UnitTest::GetInstance()->Failed(), "output of a program, or a failure above");
}

void Life::checkAnswer() {
    const auto answer = panel.send("ORVATarvexMsg", 99, 0, answerLimit);
    look();
    if (!isOn() || blocked || !panel.loopRuns())
        return;
    require(answer && (answer == 1 || disturbed), "the helper does not answer");
    hindered = isHindering();
}

void Life::checkEnds() {
    for (const panel::EndedStatus& each : status.ended) {
        if (!isHelper(each.name) || !ended.insert(each.name).second || killed.contains(each.name))
            continue;
        const bool late = told && busy && each.time >= toldAt + longestWait; // for the thread of the disks
        const bool second = passing.contains(each.name) || (holds && helper()); // or one that is held has the mutex
        require((each.exitCode == 0 && (told || disturbed || second)) ||
                    (each.exitCode == 1 && (late || hindered || disturbed)) || (each.exitCode == crashed && late),
                each.name + " has ended with " + std::to_string(each.exitCode) + " without a reason");
        require(each.exitCode != 1 || disturbed || tampered || hasReason(panel),
                each.name + " says not why it has ended with 1");
        require(each.exitCode != 0 || !told || mayStayDim || status.backLight == fullLight, "the screen stays dim");
        // It may have ended within an update, or after one that nobody has seen.
        known &= each.exitCode == 0 && each.time < updated + interval * 1000;
        mayForget |= each.exitCode != 0;
    }
}

// No call may use a handle that was closed. What a failed call has given, null or -1, may be used, and partitions may
// be sought on a disk that has gone.
void Life::checkTrace() {
    std::ifstream trace(panel.panel().directory() / "run/trace");
    trace.seekg(traced);
    const auto has = [](const std::string& text, const char* word) { return text.find(word) != std::string::npos; };
    for (std::string line; std::getline(trace, line); traced = trace.tellg()) {
        const std::string result = line.substr(std::min(line.rfind(") = "), line.size()));
        require((!has(result, " error 6") && result != ") = 6") || has(result, "fault") || !has(line, "TarvexHelper") ||
                    has(line, "null") || has(line, "(-1") || has(line, " FindFirstPart") || has(line, " FindNextPart"),
                "a closed handle: " + line);
    }
}

void Life::checkUse() {
    bool outgrown = false;
    for (const char* file : logFiles)
        outgrown |= panel.exists(file) && panel.read(file).size() > logLimit;
    require(held || !outgrown, "the log has outgrown its limit");
    held &= outgrown;
    const auto count = [this](const auto& processes) {
        for (const auto& each : processes)
            if (each.name.starts_with("Actor.exe#"))
                use.programs = std::max(use.programs, static_cast<std::uint32_t>(std::stoul(each.name.substr(10))));
    };
    count(status.ended);
    count(status.processes);
    if (!helper() || disturbed || hindered || told || !panel.loopRuns())
        return;
    use = {helper()->name, helper()->handles, helper()->threads, use.programs, reloads};
    if (base.process != use.process)
        base = use;
    require(use.handles <= base.handles + 2 * (use.programs - base.programs) + handlesOfWork,
            std::to_string(use.handles) + " handles after " + std::to_string(base.handles));
    require(use.threads <= base.threads + 2 + use.reloads - base.reloads,
            std::to_string(use.threads) + " threads after " + std::to_string(base.threads));
}

// The thread of the statistics waits for the next update, the wait says how many there were, and the file shows them.
void Life::checkTotals() {
    const auto kind = kindOf("SHC1");
    if (disturbed || holds || kind == Behaviour::Kind::block || kind == Behaviour::Kind::delay)
        return;
    if (helper()) {
        const auto& calls = helper()->calls;
        const auto isOfUpdate = [](const auto& each) { return isWait(each, ", 300000)"); };
        const auto wait = std::find_if(calls.begin(), calls.end(), isOfUpdate);
        require(wait != calls.end() || blocked || told || !panel.loopRuns(), "nobody waits for the next update");
        if (wait == calls.end())
            return;
        updateTotals(*wait);
    }
    const std::string file = panel.exists(statisticsPath) ? panel.read(statisticsPath) : "";
    if (!known && helper() && file.ends_with("</EMMC>\n")) {
        sessionCount = numberIn(file, "SessionWriteCountLow");
        sessionDuration = numberIn(file, "SessionDuration");
        totalCount = numberIn(file, "TotalWriteCountLow");
        require(mayForget || numberIn(file, "TotalDuration") >= knownDuration, "the totals have begun again");
        totalDuration = numberIn(file, "TotalDuration");
        known = true;
        mayForget = false;
    }
    const std::string model = statisticsFile(sessionCount, sessionDuration, totalCount, totalDuration);
    if (known)
        knownDuration = totalDuration;
    require(!known || file == model, "the statistics are\n" + file + "and not\n" + model);
}

void Life::updateTotals(const panel::CallStatus& wait) {
    const std::string process = std::to_string(boots) + helper()->name;
    const bool fresh = process != updater;
    const auto count = static_cast<std::uint32_t>(std::stoul(wait.call.substr(wait.call.find('[') + 1)));
    const std::uint32_t made = count - (fresh ? 0 : updates);
    const std::uint64_t since = wait.since - (fresh ? 0 : updated);
    updater = process;
    updates = count;
    updated = wait.since;
    if (made == 0)
        return;
    std::uint32_t seconds = made * interval;
    if (fresh) { // the first update counts the time since boot
        const std::uint64_t first = since - (made - 1) * interval * 1000;
        seconds = static_cast<std::uint32_t>(ticks + first) / 1000 + (made - 1) * interval;
        sessionCount = sessionDuration = 0;
    } else {
        require(!known || since == made * interval * 1000, "an update comes at the wrong time");
    }
    const bool counts = kindOf("SHC1") == Behaviour::Kind::answer;
    const std::uint32_t counted = counts ? panel.panel().devices().state("SHC1").values[0] : 0;
    totalCount += counted - sessionCount;
    sessionCount = counted;
    sessionDuration += seconds;
    totalDuration += seconds;
}
