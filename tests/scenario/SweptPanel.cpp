#include "tests/scenario/SweptPanel.h"

#include "platform/panel/Operator.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/SettingsFile.h"
#include "tests/support/StatisticsFile.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* onDisk = "\\Hard Disk\\Tarvex\\TarvexHelper.exe";
constexpr std::uint32_t counterDelay = 7; // ms
constexpr std::uint32_t limitOfAnswer = 60000; // ms
constexpr std::size_t logBefore = 101500; // bytes: the life fills the rest of the file, and goes on in the other one

std::uint64_t numberIn(const std::string& document, const std::string& element) {
    const auto begin = document.find('<' + element + '>');
    return begin == std::string::npos ? 0 : std::stoull(document.substr(begin + element.size() + 2));
}

// With it the settings need two sectors.
std::string restoreInProgress() {
    std::string components;
    for (const char* name : {"Runtime", "Fonts", "Recipes", "Project", "Languages", "Drivers"})
        components += std::string("            <Component Name=\"") + name + "\"/>\n";
    return "    <Restore InProgress=\"1\" RepositoryPath=\"\\Storage\\a.osr\" Force=\"0\">\n        <Components>\n" +
           components + "        </Components>\n    </Restore>\n";
}

} // namespace

Tree withoutDeeds(Tree state) {
    std::erase_if(state, [](const auto& entry) { return entry.first.starts_with('('); });
    return state;
}

SweptPanel::SweptPanel(Story storyToTell) : story(storyToTell) {
    const panel::Devices devices = panel().devices();
    devices.setValues("SHC1", {40});
    devices.setBehaviour("SHC1", {panel::Behaviour::Kind::delay, counterDelay});
    if (story == Story::fromDisk) {
        plugDisk("Hard Disk");
        return;
    }
    install();
    // A thousand days and a half, and more writes than any session here makes.
    write(statisticsPath, statisticsFile(3, 5, 700000, 86443200));
    if (story == Story::life) {
        write(saverSettingsPath, saverSettings(true, 60000, 0));
        write(buzzerSettingsPath, buzzerSettings(true, 3400));
        put("\\Temp\\Actor.exe", programFile("Actor"));
        write("\\MMCMemory\\Tarvex\\helper_log0.txt", std::string(logBefore, '-') + '\n');
        return;
    }
    write("\\MMCMemory\\_rm_old.exe", "left behind");
    write("\\NANDFlash\\ZentrixHMI\\ZentrixHMICE.exe", "runtime");
    write("\\NANDFlash\\ZentrixHMI\\_backup_ZentrixHMICE.exe", "backup");
    write(settingsPath, settingsFile(3, {"\\MMCMemory"}, restoreInProgress()));
}

bool SweptPanel::live() {
    const bool livedOn = liveOn();
    end();
    return livedOn;
}

bool SweptPanel::liveOn() {
    startHelper();
    if (!settlesInLoop())
        return false;
    driver().advance(1000);
    if (story == Story::life && !(idleAndWake() && plugAndUnplug() && reload()))
        deeds.clear();
    return settlesInLoop();
}

bool SweptPanel::liveUntilCut() {
    if (liveOn() && driver().isOn()) {
        driver().advance(2000); // as before the end in `live`
        command(1);
    }
    return driver().waitUntil([this] { return !driver().isOn(); }, limit);
}

void SweptPanel::startHelper() {
    const bool again = story == Story::fromDisk && exists(onDisk);
    if (again || exists(helper))
        driver().start(again ? onDisk : helper);
}

bool SweptPanel::idleAndWake() {
    const auto screen = [this] {
        std::string levels = driver().status().screen.cover;
        for (const std::uint32_t level : driver().status().backLight)
            levels += ' ' + std::to_string(level);
        return levels;
    };
    panel::setUserActive(false);
    driver().advance(61000);
    if (!driver().isOn())
        return false;
    deeds["(dims)"] = screen();
    panel::touch({.limit = limitOfAnswer});
    driver().advance(1000);
    deeds["(wakes)"] = screen();
    deeds["(clicks)"] = std::to_string(panel().devices().requests("BZR1").size());
    return settlesInLoop();
}

bool SweptPanel::plugAndUnplug() {
    const FreshFolder disk;
    writeText(disk.path / "Tarvex.xml",
              "<?xml version='1.0' encoding='UTF-8'?><Tarvex><Commands><Command Type='RunProcess' "
              "FilePath='\\Temp\\Actor.exe' Arguments='sleep 1000' WaitCompletion='1'/></Commands></Tarvex>");
    panel().plug({{{disk.path, "Hard Disk"}}});
    driver().advance(3000);
    panel().disks().unplug("Hard Disk");
    driver().advance(1000);
    std::string ended;
    for (const panel::EndedStatus& each : driver().status().ended)
        ended += each.name + ' ' + std::to_string(each.exitCode) + ' ';
    deeds["(starts)"] = ended;
    return settlesInLoop();
}

bool SweptPanel::reload() {
    const auto answer = [this](const char* message) {
        const auto result = send(message, 1, 0, limitOfAnswer);
        return result ? std::to_string(*result) : "none";
    };
    std::string answers = answer("ORVATarvexScreenSaverMsg");
    for (const bool enabled : {false, true}) {
        if (!driver().isOn())
            return false;
        write(buzzerSettingsPath, buzzerSettings(enabled, 1000));
        if (settlesInLoop())
            answers += answer("ORVATarvexBuzzerMsg");
    }
    deeds["(reloads)"] = answers;
    driver().settle(); // a press that no thread has taken clicks now
    if (!driver().isOn())
        return false;
    const std::size_t clicks = panel().devices().requests("BZR1").size();
    panel::touch({.limit = limitOfAnswer});
    panel().devices().setValues("SHC1", {90});
    driver().advance(300000);
    deeds["(clicks again)"] = std::to_string(panel().devices().requests("BZR1").size() - clicks);
    return settlesInLoop();
}

void SweptPanel::end(unsigned commands) {
    if (settlesInLoop()) // or has left it, and waits for the thread that is busy with the disk
        driver().advance(1000);
    if (settlesInLoop()) {
        const unsigned inVain = commands == 0 ? 1 : commands - 1;
        for (unsigned count = 0; count < inVain; ++count)
            EXPECT_EQ(command(1), 0);
        driver().advance(1000);
        EXPECT_TRUE(loopRuns());
        if (commands > 0)
            terminate();
    }
    for (const panel::EndedStatus& ended : driver().status().ended)
        EXPECT_LE(ended.exitCode, 1U) << ended.name;
}

std::uint64_t SweptPanel::countedWrites() {
    const std::vector<panel::Request> requests = panel().devices().requests("SHC1");
    return requests.empty() || requests.back().error != 0 ? 0 : requests.back().words.at(0);
}

Tree SweptPanel::files() const {
    Tree state = tree("\\");
    state.erase("MMCMemory\\Tarvex\\Tarvex.started"); // how often the application was started
    return state;
}

Tree SweptPanel::left() {
    Tree state = files();
    for (auto& [name, content] : state)
        if ((std::filesystem::status(panel().hostPath(name)).permissions() & std::filesystem::perms::owner_write) ==
            std::filesystem::perms::none)
            content += " (read-only)";
    state.merge(registry());
    state["(counted)"] = std::to_string(countedWrites());
    return state;
}

Tree SweptPanel::endState(bool afterReboot) {
    const std::uint64_t counted = countedWrites();
    driver().clearFaults();
    if (afterReboot)
        reboot();
    return stateAfter(counted, [this] { startHelper(); });
}

Tree SweptPanel::stateAfterCut() {
    const std::uint64_t counted = countedWrites();
    reboot();
    return stateAfter(counted, [this] {
        if (driver().startInit().empty())
            startHelper();
    });
}

Tree SweptPanel::stateAfter(std::uint64_t counted, const std::function<void()>& start) {
    panel().devices().setValues("SHC1", {500});
    if (story == Story::life)
        write(buzzerSettingsPath, buzzerSettings(true, 1000)); // as a whole life has left it
    start();
    end();
    if (panel().isOn())
        panel().cut(); // what counts of the registry is what is left then
    Tree state = files();
    state.merge(registry());
    state.merge(deeds);
    // How long a run takes depends on its failures; days do not. What was counted before is what the driver has told.
    const auto statistics = state.find(statisticsPath + 1);
    if (statistics != state.end() && statistics->second.ends_with("</EMMC>\n")) {
        std::string& document = statistics->second;
        state[statistics->first + ": writes"] = std::to_string(numberIn(document, "TotalWriteCountLow") - counted) +
                                                ", now " + std::to_string(numberIn(document, "SessionWriteCountLow"));
        document = std::to_string(numberIn(document, "TotalDuration") / 86400) + " days, now " +
                   std::to_string(numberIn(document, "SessionDuration") / 86400);
    }
    return state;
}
