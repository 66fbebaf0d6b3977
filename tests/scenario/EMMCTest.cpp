// "EMMC.xml" over a helper's life, from outside.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

using panel::Behaviour;

namespace {

constexpr const char* path = "\\MMCMemory\\Tarvex\\EMMC.xml";
constexpr std::uint64_t hour = 3600000;

std::string file(const std::string& sessionCount, std::uint64_t sessionDuration, const std::string& totalCount,
                 std::uint64_t totalDuration, const std::string& totalHigh = "0") {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<EMMC>\n"
           "    <Settings>\n"
           "        <SessionWriteCountHigh>0</SessionWriteCountHigh>\n"
           "        <SessionWriteCountLow>" +
           sessionCount +
           "</SessionWriteCountLow>\n"
           "        <SessionDuration>" +
           std::to_string(sessionDuration) +
           "</SessionDuration>\n"
           "        <TotalWriteCountHigh>" +
           totalHigh +
           "</TotalWriteCountHigh>\n"
           "        <TotalWriteCountLow>" +
           totalCount +
           "</TotalWriteCountLow>\n"
           "        <TotalDuration>" +
           std::to_string(totalDuration) +
           "</TotalDuration>\n"
           "    </Settings>\n"
           "</EMMC>\n";
}

struct CountingPanel : ScenarioPanel {
    CountingPanel() {
        install();
    }
    // With this count in the driver, so many ms after the boot.
    void startHelper(std::uint32_t counted, std::uint64_t after) {
        count(counted);
        driver().advance(after);
        driver().start(helper);
        EXPECT_TRUE(reachesLoop());
        driver().settle();
    }
    void count(std::uint32_t counted) {
        panel().devices().setValues("SHC1", {counted});
    }
    void pass(std::uint64_t milliseconds) {
        driver().advance(milliseconds);
        driver().settle();
    }
};

void setVersion(ScenarioPanel& panel, const panel::registry::Value& version) {
    panel.panel().changeRegistry(
        [&](panel::registry::Tree& tree) { tree.make("HKEY_LOCAL_MACHINE\\ORVA")->set(version); }, true);
}

} // namespace

TEST(EMMC, IsRecordedOverHoursAndReboots) {
    CountingPanel panel;
    panel.startHelper(500, 31999);
    EXPECT_EQ(panel.read(path), file("500", 31, "500", 31));
    panel.pass(2 * hour);
    EXPECT_EQ(panel.read(path), file("500", 7231, "500", 7231));
    panel.count(700);
    panel.pass(hour);
    EXPECT_EQ(panel.read(path), file("700", 10831, "700", 10831));
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.read(path), file("700", 10831, "700", 10831)) << "the end writes nothing";

    panel.reboot();
    panel.write(path, file("800", 7231, "1000", 7231));
    panel.startHelper(20, 5000); // the counter begins anew
    EXPECT_EQ(panel.read(path), file("20", 5, "1020", 7236));
    panel.panel().devices().setBehaviour("SHC1", {Behaviour::Kind::refuse, 31}, "count");
    panel.pass(hour);
    EXPECT_EQ(panel.read(path), file("0", 3605, "1000", 10836));
    panel.panel().devices().setBehaviour("SHC1", {});
    panel.count(60);
    panel.pass(hour);
    EXPECT_EQ(panel.read(path), file("60", 7205, "1060", 14436));
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{}) << "nothing of this is reported";
}

TEST(EMMC, GrowsWithEachUpdateFrom4294967295On) {
    CountingPanel panel;
    panel.write(path, file("800", 7231, "4294966795", 7231));
    panel.startHelper(500, 0);
    EXPECT_EQ(panel.read(path), file("500", 0, "4294967295", 7231, "1"));
    panel.pass(2 * hour);
    EXPECT_EQ(panel.read(path), file("500", 7200, "4294967295", 14431, "25"));
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(EMMC, SurvivesAFileThatIsMissingDamagedOrCannotBeWritten) {
    CountingPanel panel;
    panel.startHelper(10, 0);
    std::filesystem::remove(panel.panel().hostPath(path));
    panel.pass(300000);
    EXPECT_EQ(panel.read(path), file("10", 300, "10", 300)) << "begun anew";
    panel.write(path, "<EMMC><Settings><TotalDuration>77</TotalDur");
    panel.pass(300000);
    EXPECT_EQ(panel.read(path), "<EMMC><Settings><TotalDuration>77</TotalDur") << "looked at again";
    panel.pass(300);
    EXPECT_EQ(panel.read(path), file("10", 300, "10", 300)) << "begun anew";
    panel.write(path, "<EMMC><Settings><TotalDuration>77</TotalDuration></Settings></EMMC>");
    panel.pass(300000);
    EXPECT_EQ(panel.read(path), file("10", 300, "10", 377)) << "what there is counts";

    const std::filesystem::path host = panel.panel().hostPath(path);
    std::filesystem::permissions(host, std::filesystem::perms::owner_read);
    panel.count(15);
    panel.pass(300300);
    EXPECT_EQ(panel.read(path), file("10", 300, "10", 377));
    std::filesystem::permissions(host, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    panel.pass(300000);
    EXPECT_EQ(panel.read(path), file("15", 600, "15", 677)) << "five minutes are lost, but no write";
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{}) << "nothing of this is reported";
}

TEST(EMMC, IsRecordedFromVersion15On) {
    const struct {
        const char* version;
        bool recorded;
    } cases[] = {{"2.14", false}, {"2.15", true},   {"3.20", true},     {"15", false}, {"", false},
                 {".15", true},   {"2. 15", false}, {"2.015b.3", true}, {"2.9", false}};
    for (const auto& [version, recorded] : cases) {
        SCOPED_TRACE(version);
        ScenarioPanel panel;
        panel.install();
        setVersion(panel, panel::registry::textValue("Version", version));
        panel.driver().start(ScenarioPanel::helper);
        EXPECT_TRUE(panel.reachesLoop());
        panel.driver().settle();
        EXPECT_EQ(panel.exists(path), recorded);
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(EMMC, AVersionThatIsNoTextEndsTheHelper) {
    ScenarioPanel panel;
    panel.install();
    setVersion(panel, panel::registry::numberValue("Version", 15));
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
    EXPECT_EQ(panel.log(),
              firstStartLines({"INFO;Module manager initialization",
                               "ERROR;Exception OrvaUtils::Registry::RegistryException: Unexpected value type",
                               "INFO;Helper terminated"}));
    EXPECT_FALSE(panel.exists(path));
}
