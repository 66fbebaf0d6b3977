#include "tests/soak/Life.h"

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
constexpr std::uint32_t endLimit = 100000; // ms; the helper waits for up to four threads, 20 s each
constexpr std::uint64_t halfADay = 43200000; // ms
constexpr std::uint32_t interval = 300; // s, of the statistics
constexpr std::size_t memoryOfRest = 8; // KB
constexpr std::size_t logLimit = 102400 + 400; // bytes, and a line more of each thread
constexpr std::uint32_t handlesOfWork = 11; // of both modules, and of work with a disk
constexpr std::uint32_t crashed = 0xC0000005;

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

void require(bool holds, const std::string& what) {
    if (!holds)
        throw Finding(what);
}

} // namespace

Life::Life(std::uint32_t ticksAtBoot) : panel(ticksAtBoot), ticks(ticksAtBoot) {
    panel.install();
    panel.put("\\Temp\\Actor.exe", programFile("Actor"));
    bootCleanly();
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
    panel.driver().advance(halfADay);
    look();
    const std::size_t before = helper() ? ownMemory(helper()->hostPid) : 0;
    panel.driver().advance(halfADay);
    look();
    require(!helper() || disturbed || ownMemory(helper()->hostPid) <= before + memoryOfRest,
            "half a day without events costs memory");
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

void Life::start(bool fromDisk) {
    if (fromDisk) {
        const auto disks = panel.panel().disks().volumes();
        if (std::none_of(disks.begin(), disks.end(), [](const auto& each) { return each.name == "Hard Disk"; }))
            panel.plugDisk("Hard Disk");
        if (!panel.exists(onDisk))
            return;
    }
    if (!helper())
        disturbed = hindered = told = busy = false;
    const bool second = helper();
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
    busy =
        helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), [](const auto& each) {
            return each.call.starts_with("Sleep[") || isWait(each, ", 4294967295)"); // for a disk, or for its program
        });
    told = true;
    panel.send("ORVATarvexMsg", 1, 0, answerLimit);
}

void Life::kill() {
    if (helper() && panel.driver().kill(helper()->name))
        killed.insert(helper()->name);
}

void Life::boot(bool cut, std::uint32_t sectors) {
    tampered |= cut;
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
    hits = reloads = 0;
    traced = 0;
    base = use = {};
    disturbed = hindered = told = busy = false;
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

void Life::add(panel::Fault fault) {
    if (panel.panel().options().storage != panel::StoragePolicy::torn)
        fault.sectors = 0;
    if (panel.driver().faults().size() < 8)
        panel.driver().addFault(fault);
}

void Life::calm() {
    panel.driver().clearFaults();
    hits = 0;
    const panel::Devices devices = panel.panel().devices();
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags"})
        devices.setBehaviour(device, {});
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags", "PowerManager"})
        devices.setPresent(device, true);
}

void Life::bootCleanly() {
    calm();
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

void Life::look() {
    status = panel.driver().status();
    std::uint32_t sum = 0;
    bool holds = false;
    bool inLoop = false;
    for (const panel::Fault& fault : panel.driver().faults()) {
        sum += fault.hits;
        if (fault.action == panel::FaultAction::hold && fault.hits > 0)
            holds = true, inLoop |= fault.function == "GetMessageW";
    }
    held |= holds;
    disturbed |= sum > hits;
    hits = sum;
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags"})
        holds |= kindOf(device) == Behaviour::Kind::block;
    blocked = holds && helper() && !helper()->calls.empty() && helper()->calls[0].thread == 1 &&
              (inLoop || !helper()->calls[0].call.starts_with("GetMessageW["));
    hindered |= holds || kindOf("BKL1") == Behaviour::Kind::refuse;
    tampered |= disturbed;
    known &= !disturbed && kindOf("SHC1") != Behaviour::Kind::block && kindOf("SHC1") != Behaviour::Kind::delay;
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
        require(settles || disturbed, told ? "the helper does not end" : "neither in the loop nor ended");
        told &= settles; // else it has not got the message
        if (isOn() && !told && !blocked && panel.loopRuns())
            checkAnswer();
    }
    if (!isOn()) { // a fault has cut the power
        tampered = true;
        known = false;
        panel.reboot();
        startListed();
        return check();
    }
    look();
    checkEnds();
    checkTrace();
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
    hindered = kindOf("BKL1") == Behaviour::Kind::refuse;
}

void Life::checkEnds() {
    for (const panel::EndedStatus& each : status.ended) {
        if (!isHelper(each.name) || !ended.insert(each.name).second || killed.contains(each.name))
            continue;
        const bool late = told && busy; // it waits no longer than 20 s for the thread of the disks
        require((each.exitCode == 0 && (told || disturbed || passing.contains(each.name))) ||
                    (each.exitCode == 1 && (late || hindered || disturbed)) || (each.exitCode == crashed && late),
                each.name + " has ended with " + std::to_string(each.exitCode) + " without a reason");
        // It may have ended within an update, or after one that nobody has seen.
        known &= each.exitCode == 0 && each.time < updated + interval * 1000;
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
    for (const char* file : logFiles)
        require(held || !panel.exists(file) || panel.read(file).size() <= logLimit,
                std::string(file) + " has outgrown its limit");
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
    if (disturbed || kind == Behaviour::Kind::block || kind == Behaviour::Kind::delay)
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
        totalDuration = numberIn(file, "TotalDuration");
        known = true;
    }
    const std::string model = statisticsFile(sessionCount, sessionDuration, totalCount, totalDuration);
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
