#include "tests/soak/Life.h"

#include "tests/support/ModuleSettings.h"
#include "tests/support/OwnMemory.h"
#include "tests/support/SettingsFile.h"
#include "tests/support/StatisticsFile.h"

#include <algorithm>

namespace {

constexpr const char* onDisk = "\\Hard Disk\\Tarvex\\TarvexHelper.exe";
constexpr std::uint64_t halfADay = 43200000; // ms
constexpr std::size_t memoryOfProgram = 300; // bytes

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

} // namespace

Life::Life(std::uint32_t ticks, panel::StoragePolicy policy) : panel(ticks), invariants(conditions, ticks) {
    panel.panel().setStorage(policy);
    panel.install();
    panel.put("\\Temp\\Actor.exe", programFile("Actor"));
    bootCleanly();
    start(false); // the second start finds the registry as all later ones do
    check();
    end();
    check();
    started = placesOf(panel, 2);
    start(true);
    check();
    installed = placesOf(panel, 3);
}

void Life::take(const std::function<void(Life&)>& step) {
    conditions.look();
    try {
        step(*this);
    } catch (const Finding&) {
        throw;
    } catch (const std::runtime_error&) {
        if (conditions.isOn()) // no power cut by a fault
            throw;
    }
    check();
}

void Life::check() {
    while (!invariants.check()) {
        conditions.loseFiles();
        panel.reboot();
        startListed();
    }
}

void Life::rest() {
    repeat(1, 8, [this] { panel.pass(halfADay); });
}

std::optional<std::uint32_t> Life::repeat(std::uint32_t rounds, std::size_t memory,
                                          const std::function<void()>& round) {
    std::optional<std::uint32_t> sum;
    Use before;
    std::size_t usedBefore = 0;
    for (const bool second : {false, true}) {
        for (std::uint32_t taken = 0; taken < rounds; ++taken)
            round();
        panel.driver().settle();
        conditions.look();
        const Use now = invariants.use();
        const std::size_t used = conditions.helper() ? ownMemory(conditions.helper()->hostPid) : 0;
        const std::uint32_t programs = now.programs - before.programs;
        if (second && conditions.helper() && now.process == before.process && !conditions.disturbed) {
            if (!conditions.hindered)
                sum = programs;
            require(used <= usedBefore + memory + programs * memoryOfProgram / 1024,
                    "the same again costs memory: " + std::to_string(used) + " KB after " + std::to_string(usedBefore));
            require(conditions.hindered ||
                        (now.handles == before.handles + 2 * programs && now.threads == before.threads),
                    "the same again costs handles or threads");
        }
        before = now;
        usedBefore = used;
    }
    return sum;
}

void Life::tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted) {
    if (!panel.loopRuns())
        return;
    conditions.reloads += code == 1 && message == "ORVATarvexBuzzerMsg";
    if (posted)
        return panel::postMessage(panel::findWindow("ORVATarvexHelper"), message, code, argument);
    const auto answer = panel.send(message.c_str(), code, argument, answerLimit);
    conditions.look();
    if (conditions.isAsModelled() && conditions.isOn())
        require(answer && expected(message, code, argument).find(std::to_string(*answer)) != std::string::npos,
                message + " has the answer " + (answer ? std::to_string(*answer) : "none"));
}

bool Life::isIdle() {
    conditions.look();
    return !conditions.helper();
}

bool Life::isUndisturbed() {
    conditions.look();
    // With a slow backlight, sent commands would overtake the posted ones before them.
    return conditions.helper() && conditions.isAsModelled() && panel.loopRuns() &&
           conditions.kindOf("BKL1") == panel::Behaviour::Kind::answer;
}

void Life::start(bool fromDisk) {
    if (fromDisk) {
        const auto disks = panel.panel().disks().volumes();
        if (std::none_of(disks.begin(), disks.end(), [](const auto& each) { return each.name == "Hard Disk"; }))
            panel.plugDisk("Hard Disk");
        if (!panel.exists(onDisk))
            return;
    }
    const panel::ProcessStatus* const helper = conditions.helper();
    if (!helper)
        conditions.start();
    else if (conditions.holds) // perhaps before it has the mutex, so it would be the second one
        conditions.passing.insert(helper->name);
    const auto process = panel.driver().start(fromDisk ? onDisk : ScenarioPanel::helper);
    if (fromDisk || helper)
        conditions.passing.insert(process.name);
    if (fromDisk)
        panel.driver().advance(2000); // until it has handed over
}

void Life::end() {
    if (!panel.loopRuns())
        return;
    conditions.askToEnd();
    panel.send("ORVATarvexMsg", 1, 0, answerLimit);
}

// A helper that is held between opening a file for writing and writing it leaves the file empty.
void Life::loseHeldFiles() {
    if (conditions.holds)
        conditions.loseFiles();
}

void Life::kill() {
    if (!conditions.helper())
        return;
    conditions.killed.insert(conditions.helper()->name);
    conditions.mayStayDim = conditions.mayForget = true;
    loseHeldFiles();
    panel.driver().kill(conditions.helper()->name);
}

void Life::boot(bool cut, std::uint32_t sectors) {
    loseHeldFiles();
    if (cut) {
        conditions.tampered = conditions.mayForget = true;
        panel.panel().cut(panel.panel().options().storage == panel::StoragePolicy::torn ? sectors : 0);
    }
    panel.reboot();
    startListed();
}

void Life::startListed() {
    conditions.boot();
    invariants.boot();
    panel.driver().setTracing(true);
    if (panel.driver().startInit().empty()) {
        require(conditions.tampered || undisturbed.empty(), "the registry does not start the helper");
        panel.driver().start(ScenarioPanel::helper);
    }
}

void Life::plug(const panel::Disk& disk) {
    try {
        panel.panel().plug(disk);
    } catch (const std::runtime_error&) { // the name is taken, or there is no room
    }
}

void Life::unplugAll() {
    for (const panel::Disk& disk : panel.panel().disks().list())
        panel.panel().disks().unplug(disk.device);
}

void Life::configure(const std::string& content, bool good) {
    // A helper that is held in its start has read the former file, and writes it back when it goes on.
    conditions.tampered |= !good || conditions.holds;
    panel.write(settingsPath, content);
    panel.write("\\MMCMemory\\_rm_old.exe", "left behind");
}

void Life::unregister(const char* key, const char* value) {
    conditions.tampered = true;
    panel.panel().changeRegistry([=](auto& tree) { tree.make(key)->values.remove(value); }, true);
}

void Life::add(panel::Fault fault, std::uint32_t draw, bool fresh, bool fromDisk) {
    conditions.look();
    std::set<Place> calls = fromDisk ? installed : started;
    if (conditions.helper() && !fresh && conditions.rested)
        calls = nextPlaces(panel, *conditions.helper(), conditions.rested);
    if (!fault.function.empty())
        std::erase_if(calls, [&](const Place& each) { return std::get<1>(each) != fault.function; });
    if (calls.empty() || panel.driver().faults().size() >= 8)
        return;
    const std::uint32_t later = fault.call - 1;
    std::tie(fault.thread, fault.function, fault.call) =
        *std::next(calls.begin(), static_cast<std::ptrdiff_t>(draw % calls.size()));
    fault.call += later;
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
    conditions.hits.clear();
    const panel::Devices devices = panel.panel().devices();
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags"})
        devices.setBehaviour(device, {});
    for (const char* device : {"BKL1", "BZR1", "SHC1", "tags", "PowerManager"})
        devices.setPresent(device, true);
}

void Life::bootCleanly() {
    calm();
    panel.driver().settle(); // a helper whose held call goes on would still write its files
    unplugAll();
    panel.write(saverSettingsPath, saverSettings(true, 60000, 0));
    panel.write(buzzerSettingsPath, buzzerSettings(true, 3400));
    if (conditions.tampered)
        configure(settingsFile(2, {"\\MMCMemory"}), true);
    boot(false, 0);
    check();
    end();
    check();
    require(!conditions.helper() && !invariants.ended.empty(), "the helper does not end");
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
    conditions.tampered = false;
}

std::map<std::string, std::string> Life::state() const {
    auto state = panel.tree("\\");
    state.merge(panel.registry());
    state.erase(statisticsPath + 1);
    // No start checks this value, so a call that has failed may have cost it.
    state.try_emplace("HKEY_CLASSES_ROOT\\.osr\\ShellNew|NullFile", "REG_SZ ");
    return state;
}
