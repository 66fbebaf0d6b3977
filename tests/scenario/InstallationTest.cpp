// The helper from its start on a disk, or elsewhere, to its installed copy.
#include "tests/support/ScenarioPanel.h"
#include "tests/support/SettingsFile.h"

#include <gtest/gtest.h>

namespace {

Lines installedLines(bool withSettings = true) {
    return firstStartLines(ScenarioPanel::managerLines(withSettings));
}

Lines handOverLines(const std::string& from, bool installs, bool withSettings = true) {
    Lines lines{"INFO;Init of Helper", "INFO;I am not executing from the right path (" + from + ")"};
    if (installs)
        lines.push_back("INFO;Installing tarvex in the right path");
    lines.push_back("INFO;Restart from right path needed");
    for (const std::string& line : installedLines(withSettings))
        lines.push_back(line);
    return lines;
}

void expectNormalEnd(ScenarioPanel& panel) {
    EXPECT_EQ(panel.command(0), 1);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.lastLines(2), (Lines{"INFO;Module manager terminated", "INFO;Helper terminated"}));
}

} // namespace

class FromADisk : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Installation, FromADisk, testing::Values("Hard Disk", "Hard Disk2"));

TEST_P(FromADisk, InstallsTheFolderHandsOverAndStays) {
    ScenarioPanel panel;
    const std::string disk = GetParam();
    panel.plugDisk(disk);
    auto source = panel.tree("\\" + disk + "\\Tarvex");
    panel.write("\\" + disk + "\\Tarvex\\config.xml", settingsFile(7)); // is used, and written anew
    EXPECT_EQ(panel.run("\\" + disk + "\\Tarvex\\TarvexHelper.exe"), 0U);
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(panel.log(), handOverLines("\\" + disk + "\\Tarvex", true));
    EXPECT_TRUE(panel.isRunning("TarvexHelper.exe#2"));

    auto installed = panel.tree("\\MMCMemory\\Tarvex");
    // The folder on the disk was renamed away with the running helper in it; the installed one has cleaned it up.
    EXPECT_EQ(installed["config.xml"], settingsFile(7));
    EXPECT_NE(installed["EMMC.xml"].find("<TotalDuration>1<"), std::string::npos) << "since boot";
    installed.erase("config.xml");
    installed.erase("EMMC.xml");
    std::string& buzzer = source.at("TouchBuzzerConfig.xml"); // names the panel's own frequency by now
    buzzer.replace(buzzer.find("-1"), 2, "3400");
    EXPECT_EQ(installed, source);
    EXPECT_EQ(panel.tree("\\" + disk), (std::map<std::string, std::string>{}));
    EXPECT_FALSE(panel.exists("\\MMCMemory\\Tarvex\\Tarvex.started")); // no restore is in progress
    expectNormalEnd(panel);
}

TEST(Installation, PrefersTheFirstDiskAndKeepsWhatIsThere) {
    ScenarioPanel panel;
    panel.plugDisk("Hard Disk2");
    panel.plugDisk("Hard Disk");
    panel.write("\\MMCMemory\\Tarvex\\data\\deep\\table.bin", "own");
    panel.write("\\MMCMemory\\Tarvex\\helper_log0.txt", std::string(102400, 'x')); // takes one line more
    EXPECT_EQ(panel.run("\\Hard Disk2\\Tarvex\\TarvexHelper.exe"), 0U);
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex\\readme.txt"), "from Hard Disk");
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex\\data\\deep\\table.bin"), "own");
    EXPECT_TRUE(panel.read("\\MMCMemory\\Tarvex\\helper_log0.txt").ends_with(";INFO;Init of Helper\n"));
    EXPECT_TRUE(panel.exists("\\Hard Disk\\Tarvex\\Tarvex.exe")); // only the folder it was started from goes
}

TEST(Installation, CopiesOnlyItselfWithoutADiskThatHoldsTheApplication) {
    struct {
        bool application; // installed already
        bool disk;
    } cases[] = {{false, false}, {true, false}, {true, true}};
    for (const auto& each : cases) {
        ScenarioPanel panel;
        panel.put("\\Temp\\Helper2.exe", helperFile());
        panel.write("\\Temp\\other.txt", "stays");
        if (each.application)
            panel.put(ScenarioPanel::application, programFile("Tarvex"));
        if (each.disk)
            panel.plugDisk("Hard Disk");
        EXPECT_EQ(panel.run("\\Temp\\Helper2.exe"), 0U);
        ASSERT_TRUE(panel.reachesLoop());
        EXPECT_EQ(panel.log(), handOverLines("\\Temp", true, false));
        EXPECT_EQ(panel.exists(ScenarioPanel::application), each.application);
        EXPECT_FALSE(panel.exists("\\MMCMemory\\Tarvex\\readme.txt"));
        EXPECT_EQ(panel.tree("\\Temp"), (std::map<std::string, std::string>{{"other.txt", "stays"}}));
        expectNormalEnd(panel);
    }
}

TEST(Installation, OnlyHandsOverToAnInstalledHelper) {
    for (const std::string from : {"\\Hard Disk\\Tarvex", "\\MMCMemory\\Tarvex"}) {
        ScenarioPanel panel;
        panel.install();
        panel.plugDisk("Hard Disk");
        panel.put(from + "\\Other.exe", helperFile());
        EXPECT_EQ(panel.run(from + "\\Other.exe"), 0U);
        ASSERT_TRUE(panel.reachesLoop());
        EXPECT_EQ(panel.log(), handOverLines(from, false));
        EXPECT_FALSE(panel.exists("\\MMCMemory\\Tarvex\\readme.txt"));
        EXPECT_FALSE(panel.exists(from + "\\Other.exe"));
        EXPECT_EQ(panel.tree("\\Hard Disk").empty(), from.starts_with("\\Hard Disk"));
    }
}

TEST(Installation, RunsInPlaceWhateverTheCaseOfItsPath) {
    ScenarioPanel panel;
    panel.install();
    panel.driver().start("\\mmcMEMORY\\tarvex\\TARVEXhelper.EXE");
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(panel.log(), installedLines());
    EXPECT_EQ(panel.read(settingsPath), settingsFile(2));
    expectNormalEnd(panel);
}

TEST(Installation, DeletesAnOlderInstallationExceptWhatIsBusy) {
    ScenarioPanel panel;
    const std::string legacy = "\\MMCMemory\\ORVATarvex";
    panel.put(legacy + "\\TarvexHelper.exe", helperFile());
    panel.put(legacy + "\\sub\\Actor.exe", programFile("Actor"));
    panel.write(legacy + "\\old.txt", "old");
    panel.driver().start(legacy + "\\sub\\Actor.exe", "wait end-of-actor");
    EXPECT_EQ(panel.run(legacy + "\\TarvexHelper.exe"), 0U);
    ASSERT_TRUE(panel.reachesLoop());
    // The folder was renamed away with the two busy programs in it; the next start can delete the helper's file, but
    // not the other program's.
    EXPECT_FALSE(panel.exists(legacy));
    EXPECT_TRUE(panel.exists("\\MMCMemory\\_rm_ORVATarvex\\_rm_sub\\_rm_Actor.exe"));
    EXPECT_FALSE(panel.exists("\\MMCMemory\\_rm_ORVATarvex\\_rm_TarvexHelper.exe"));
    EXPECT_EQ(panel.log().at(5), "INFO;Path \\MMCMemory not cleaned up");
    EXPECT_EQ(panel.read(settingsPath), settingsFile(2, {"\\MMCMemory"}));
    panel.reboot(); // which ends the busy program
    panel.startInPlace();
    EXPECT_FALSE(panel.exists("\\MMCMemory\\_rm_ORVATarvex"));
    EXPECT_EQ(panel.read(settingsPath), settingsFile(2));
}

TEST(Installation, ClearsTheOldPlaceAndSavesWhereItsLeftoversAre) {
    struct {
        std::string place;
        std::string spelled; // as it is started
        std::string registered;
        const char* leftover; // the running program
    } cases[] = {
        {"\\Temp", "\\Temp", "\\Temp", "\\Temp\\_rm_TarvexHelper.exe"},
        {"\\MMCMemory\\ORVATarvex", "\\mmcMEMORY\\orvaTARVEX", "\\mmcMEMORY",
         "\\MMCMemory\\_rm_orvaTARVEX\\_rm_TarvexHelper.exe"},
        {"\\MMCMemory\\ORVATarvex2", "\\MMCMemory\\ORVATarvex2", "\\MMCMemory\\ORVATarvex2",
         "\\MMCMemory\\ORVATarvex2\\_rm_TarvexHelper.exe"},
        {"\\Hard Disk\\Any\\Sub", "\\HARD disk\\Any\\Sub", "\\HARD disk\\Any",
         "\\Hard Disk\\Any\\_rm_Sub\\_rm_TarvexHelper.exe"},
        {"\\Hard DiskX\\Sub", "\\Hard DiskX\\Sub", "\\Hard DiskX", "\\Hard DiskX\\_rm_Sub\\_rm_TarvexHelper.exe"},
        {"\\Hard Disk", "\\Hard Disk", "", "\\Hard Disk\\_rm_TarvexHelper.exe"},
    };
    for (const auto& [place, spelled, registered, leftover] : cases) {
        SCOPED_TRACE(spelled);
        ScenarioPanel panel;
        panel.plugDisk("Hard Disk");
        panel.put(place + "\\TarvexHelper.exe", helperFile());
        panel.write(place + "\\beside\\file.txt", "");
        panel.put(ScenarioPanel::helper, programFile("Actor")); // stands in: notes nothing, cleans nothing
        panel.write(settingsPath, settingsFile(2, {"\\Earlier"}));
        EXPECT_EQ(panel.run(spelled + "\\TarvexHelper.exe"), 0U);
        EXPECT_EQ(panel.read(settingsPath), settingsFile(2, {"\\Earlier", registered}));
        EXPECT_TRUE(panel.exists(leftover));
        EXPECT_EQ(panel.exists(place + "\\beside\\file.txt"), registered == place);
        EXPECT_EQ(panel.exists("\\Hard Disk\\Tarvex\\data\\deep\\table.bin"), place != "\\Hard Disk");
        if (registered.empty()) { // there is no getting over it
            EXPECT_FALSE(panel.settlesInLoop());
            panel.install();
            EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
            EXPECT_EQ(panel.errors(),
                      Lines{"ERROR;Exception OrvaUtils::IO::FileSystemException: Invalid directory name"});
            EXPECT_EQ(panel.read(settingsPath), settingsFile(2, {"\\Earlier", registered}));
        }
    }
}

TEST(Installation, FailsWhenItCannotTellWhereItStartedOrTheInstalledHelperDoesNotStart) {
    for (const auto& [failure, function] :
         {std::pair{"Generic Exception", "GetModuleFileNameW"}, {"Cannot start default helper", "CreateProcessW"}}) {
        ScenarioPanel panel;
        panel.put("\\Temp\\TarvexHelper.exe", helperFile());
        panel.failCall(function);
        EXPECT_EQ(panel.run("\\Temp\\TarvexHelper.exe"), 1U);
        EXPECT_EQ(panel.lastLines(1), Lines{std::string("ERROR;Exception OrvaUtils::Exception: ") + failure});
        EXPECT_EQ(panel.tree("\\MMCMemory\\Tarvex").empty(), std::string_view(failure) == "Generic Exception");
        EXPECT_FALSE(panel.settlesInLoop());
    }
}
