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
constexpr const char* unknownMessage = "ORVATarvexMsg"; // with this code
constexpr std::uint64_t unknownCode = 99;
constexpr std::uint32_t answerLimit = 60000; // ms
constexpr std::uint32_t endLimit = 100000; // ms; the helper waits for up to four threads, 20 s each
constexpr std::uint64_t halfADay = 43200000; // ms
constexpr std::size_t memoryOfRest = 8; // KB
constexpr std::size_t logLimit = 102400 + 400; // bytes, and one line more of each thread
constexpr std::uint32_t handlesOfWork = 11; // of modules that exist, and of work with a disk
constexpr std::uint32_t crashed = 0xC0000005;

bool isHelper(const std::string& process) {
    return process.starts_with("TarvexHelper.exe#");
}

[[noreturn]] void find(const std::string& what) {
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
        if (isOn())
            throw;
    }
    check();
}

// ---- what steps do

void Life::pass(std::uint64_t milliseconds) {
    panel.driver().advance(milliseconds);
}

void Life::rest() {
    panel.driver().advance(halfADay);
    look();
    const auto memory = [this] { return helper() ? ownMemory(helper()->hostPid) : 0; };
    const std::size_t before = memory();
    panel.driver().advance(halfADay);
    if (helper() && memory() > before + memoryOfRest)
        find("half a day without events has cost " + std::to_string(memory() - before) + " KB");
}

void Life::touch(panel::Touch::Kind kind, bool right) {
    panel::touch({.kind = kind, .right = right, .limit = answerLimit});
}

void Life::setUserActive(bool active) {
    if (status.userActive)
        panel::setUserActive(active);
}

void Life::tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted) {
    if (!panel.loopRuns())
        return;
    if (code == 1 && message == "ORVATarvexBuzzerMsg")
        ++reloads;
    if (posted)
        return panel::postMessage(panel::findWindow("ORVATarvexHelper"), message, code, argument);
    const auto answer = panel.send(message.c_str(), code, argument, answerLimit);
    look();
    if (told || disturbed || hindered || !isOn())
        return;
    if (!answer)
        find(message + " has no answer");
    if (expected(message, code, argument).find(std::to_string(*answer)) == std::string::npos)
        find(message + " has the answer " + std::to_string(*answer));
}

std::string Life::expected(const std::string& message, std::uint64_t code, std::int64_t argument) const {
    const bool saver = message == "ORVATarvexScreenSaverMsg";
    if (message.find("Tarvex") == std::string::npos)
        return "0"; // as the system answers
    if (code == 1 && message != "ORVATarvexMsg")
        return badSettings.contains(saver ? saverSettingsPath : buzzerSettingsPath) ? "2" : "0";
    if (!saver || code == 0 || code > 5)
        return "1";
    const bool inRange = code == 3 ? argument > 0 : code != 4 || (argument >= 0 && argument < 256);
    return inRange ? "0" : "3";
}

void Life::chatter(std::uint32_t messages) {
    for (std::uint32_t count = 0; count < messages && !blocked && panel.loopRuns(); ++count)
        panel.send(unknownMessage, unknownCode, 0, answerLimit);
}

void Life::start(bool fromDisk) {
    if (fromDisk && !isPlugged("Hard Disk") && panel.panel().disks().list().size() < 8)
        panel.plugDisk("Hard Disk");
    if (fromDisk && !panel.exists(onDisk))
        return;
    const bool first = !helper();
    const auto process = panel.driver().start(fromDisk ? onDisk : ScenarioPanel::helper);
    if (fromDisk || !first)
        passing.insert(process.name);
    if (first)
        disturbed = hindered = told = busy = false;
    if (fromDisk)
        panel.driver().advance(2000); // until it has handed over
}

void Life::end() {
    if (!panel.loopRuns())
        return;
    look();
    const auto isOfDisks = [](const panel::CallStatus& each) { // a device that is not ready, or a program
        return each.call.starts_with("Sleep[") ||
               (each.call.starts_with("WaitForSingleObject[") && each.call.ends_with(", 4294967295)"));
    };
    busy = helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), isOfDisks);
    told = true;
    panel.send("ORVATarvexMsg", 1, 0, answerLimit);
}

void Life::kill() {
    if (!helper())
        return;
    killed.insert(helper()->name);
    panel.driver().kill(helper()->name);
}

void Life::boot(PowerLoss loss, std::uint32_t sectors, const std::optional<panel::Fault>& fault) {
    if (loss == PowerLoss::cut)
        panel.panel().cut(policy == panel::StoragePolicy::torn ? sectors : 0);
    tampered |= loss == PowerLoss::cut;
    panel.reboot();
    startListed();
    if (fault)
        add(*fault);
}

void Life::startListed() {
    ++boots;
    base = {};
    ended.clear();
    passing.clear();
    killed.clear();
    hits = 0;
    traced = 0;
    programs = reloads = 0;
    disturbed = hindered = blocked = told = busy = false;
    panel.driver().setTracing(true);
    for (const panel::InitStart& each : panel.driver().startInit())
        if (!each.process.name.empty())
            return;
    if (!tampered && boots > 1)
        find("the registry does not start the helper");
    start(false);
}

void Life::plug(const std::string& commandFile, const std::string& volume, std::uint64_t readyAfter, bool mounted) {
    const auto disks = panel.panel().disks().list();
    if (disks.size() >= 8 || (!volume.empty() && isPlugged(volume)))
        return;
    const FreshFolder disk;
    if (commandFile != "-")
        writeText(disk.path / "Tarvex.xml", commandFile);
    panel.panel().plug({{{disk.path, volume, mounted ? panel::mountedPartition : 0}}, readyAfter});
}

bool Life::isPlugged(const std::string& volume) {
    for (const panel::Disk& disk : panel.panel().disks().list())
        for (const panel::Partition& partition : disk.partitions)
            if (partition.volume == volume)
                return true;
    return false;
}

void Life::unplug(std::uint32_t which) {
    const auto disks = panel.panel().disks().list();
    if (!disks.empty())
        panel.panel().disks().unplug(disks[which % disks.size()].device);
}

void Life::set(const char* file, const std::string& content, bool good) {
    if (content == "-")
        std::filesystem::remove(panel.panel().hostPath(file));
    else
        panel.write(file, content);
    if (good)
        badSettings.erase(file);
    else
        badSettings.insert(file);
}

void Life::setConfiguration(const std::string& content, bool good) {
    tampered |= !good;
    panel.write(settingsPath, content);
    panel.write("\\MMCMemory\\_rm_old.exe", "left behind");
}

void Life::setDevice(const char* device, Behaviour behaviour) {
    panel.panel().devices().setBehaviour(device, behaviour);
    kinds[device] = behaviour.kind;
}

void Life::setPresent(const char* device, bool present) {
    panel.panel().devices().setPresent(device, present);
    if (present)
        absent.erase(device);
    else
        absent.insert(device);
}

void Life::count(std::uint32_t writes) {
    panel.panel().devices().setValues("SHC1", {writes});
    counter = writes;
}

void Life::add(panel::Fault fault) {
    if (policy != panel::StoragePolicy::torn)
        fault.sectors = 0;
    if (panel.driver().faults().size() < 8)
        panel.driver().addFault(fault);
}

void Life::calm() {
    panel.driver().clearFaults();
    hits = 0;
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags"})
        setDevice(device, {});
    while (!absent.empty())
        setPresent(absent.begin()->c_str(), true);
}

void Life::setStorage(panel::StoragePolicy storage) {
    policy = storage;
    panel.panel().setStorage(storage);
}

void Life::bootCleanly() {
    calm();
    for (const panel::Disk& disk : panel.panel().disks().list())
        panel.panel().disks().unplug(disk.device);
    set(saverSettingsPath, saverSettings(true, 60000, 0), true);
    set(buzzerSettingsPath, buzzerSettings(true, 3400), true);
    if (tampered)
        setConfiguration(settingsFile(2, {"\\MMCMemory"}), true);
    panel.reboot();
    startListed();
    check();
    end();
    check();
    if (helper() || ended.empty())
        find("the helper does not end");
    if (std::none_of(std::begin(logFiles), std::end(logFiles), [this](const char* file) {
            return panel.exists(file) && panel.read(file).ends_with(";INFO;Helper terminated\n");
        }))
        find("the log does not end with the helper's end");
    if (undisturbed.empty())
        undisturbed = state();
    std::string differing;
    const auto found = state();
    for (const auto& [name, content] : undisturbed)
        if (!found.contains(name) || found.at(name) != content)
            differing += " -" + name;
    for (const auto& [name, content] : found)
        if (!undisturbed.contains(name))
            differing += " +" + name;
    if (!differing.empty())
        find("after a clean boot the panel differs:" + differing);
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

void Life::look() {
    status = panel.driver().status();
    std::uint32_t sum = 0;
    bool blocks = false; // anything
    for (const panel::Fault& fault : panel.driver().faults()) {
        sum += fault.hits;
        blocks |= fault.action == panel::FaultAction::hold && fault.hits > 0;
    }
    held |= blocks;
    disturbed |= sum > hits;
    hits = sum;
    for (const auto& [device, kind] : kinds)
        blocks |= kind == Behaviour::Kind::block;
    blocked = blocks && helper() && !helper()->calls.empty() && helper()->calls[0].thread == 1 &&
              !helper()->calls[0].call.starts_with("GetMessageW[");
    hindered |= blocks || isHindering();
    if (kindOf("SHC1") == Behaviour::Kind::block || kindOf("SHC1") == Behaviour::Kind::delay)
        totals.forget();
    if (disturbed) {
        tampered = true;
        totals.forget();
    }
}

Behaviour::Kind Life::kindOf(const std::string& device) const {
    const auto found = kinds.find(device);
    return found == kinds.end() ? Behaviour::Kind::answer : found->second;
}

bool Life::isHindering() const {
    return kindOf("BKL1") == Behaviour::Kind::refuse || absent.contains("BKL1");
}

void Life::check() {
    panel.driver().settle();
    look();
    if (isOn() && helper()) {
        const auto settled = [this] {
            look();
            return !isOn() || blocked || !helper() || (!told && panel.loopRuns());
        };
        if (!panel.driver().waitUntil(settled, told ? endLimit : ScenarioPanel::limit) && !disturbed)
            find(told ? "the helper does not end" : "the helper is neither in its loop nor has it ended");
        if (told && disturbed && panel.loopRuns())
            told = false; // it has not got the message
        if (isOn() && !told && !blocked && panel.loopRuns())
            checkAnswer();
    }
    if (!isOn()) { // a fault has cut the power
        tampered = true;
        totals.forget();
        panel.reboot();
        startListed();
        return check();
    }
    look();
    checkEnds();
    checkTrace();
    checkUse();
    checkTotals();
    if (testing::UnitTest::GetInstance()->Failed())
        find("a program's output, or a failure above");
}

void Life::checkAnswer() {
    const auto answer = panel.send(unknownMessage, unknownCode, 0, answerLimit);
    look();
    if (!isOn() || blocked || !panel.loopRuns())
        return;
    if (!answer || (*answer != 1 && !disturbed))
        find("the helper does not answer");
    if (!isHindering())
        hindered = false;
}

void Life::checkEnds() {
    for (const panel::EndedStatus& each : status.ended) {
        if (!isHelper(each.name) || !ended.insert(each.name).second || killed.contains(each.name))
            continue;
        if (each.exitCode != 0 || each.time >= totals.due()) // perhaps in an update, or after one that nobody has seen
            totals.forget();
        const bool late = told && busy; // it does not wait longer than 20 s for the thread of the disks
        if (!(each.exitCode == 0 && (told || disturbed || passing.contains(each.name))) &&
            !(each.exitCode == 1 && (late || hindered || disturbed)) && !(each.exitCode == crashed && late))
            find(each.name + " has ended with " + std::to_string(each.exitCode) + " without a reason");
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
        if ((has(result, " error 6") || result == ") = 6") && !has(result, "fault") && has(line, "TarvexHelper.exe") &&
            !has(line, "null") && !has(line, "(-1") && !has(line, "FindFirstPartition") &&
            !has(line, "FindNextPartition"))
            find("a closed handle: " + line);
    }
}

void Life::checkUse() {
    for (const char* file : logFiles)
        if (!held && panel.exists(file) && panel.read(file).size() > logLimit)
            find(std::string(file) + " has outgrown its limit");
    const auto count = [this](const std::string& program) {
        if (program.starts_with("Actor.exe#"))
            programs = std::max(programs, static_cast<std::uint32_t>(std::stoul(program.substr(10))));
    };
    for (const panel::EndedStatus& each : status.ended)
        count(each.name);
    for (const panel::ProcessStatus& each : status.processes)
        count(each.name);
    if (!helper() || disturbed || hindered || told || !panel.loopRuns())
        return;
    const Use use{helper()->name, helper()->handles, helper()->threads, programs, reloads};
    if (base.process != use.process)
        base = use;
    else if (use.handles > base.handles + 2 * (use.programs - base.programs) + handlesOfWork)
        find(std::to_string(use.handles) + " handles after " + std::to_string(base.handles));
    else if (use.threads > base.threads + 2 + use.reloads - base.reloads)
        find(std::to_string(use.threads) + " threads after " + std::to_string(base.threads));
}

void Life::checkTotals() {
    const auto kind = kindOf("SHC1");
    if (disturbed || kind == Behaviour::Kind::block || kind == Behaviour::Kind::delay)
        return;
    if (helper()) {
        const panel::CallStatus* wait = nullptr;
        for (const panel::CallStatus& call : helper()->calls)
            if (call.call.starts_with("WaitForSingleObject[") && call.call.ends_with(", 300000)"))
                wait = &call;
        if (!wait && (blocked || told || !panel.loopRuns()))
            return;
        if (!wait)
            find("no thread waits for the next update of the statistics");
        const bool counts = kind == Behaviour::Kind::answer && !absent.contains("SHC1");
        const std::string wrong =
            totals.after({std::to_string(boots) + helper()->name,
                          static_cast<std::uint32_t>(std::stoul(wait->call.substr(20))), wait->since},
                         counts ? counter : 0, ticks);
        if (totals.areKnown() && !wrong.empty())
            find(wrong);
        if (!totals.areKnown() && panel.read(statisticsPath).ends_with("</EMMC>\n"))
            totals.adopt(panel.read(statisticsPath));
    }
    if (totals.areKnown() && panel.read(statisticsPath) != totals.text())
        find("the statistics are\n" + panel.read(statisticsPath) + "and not\n" + totals.text());
}
