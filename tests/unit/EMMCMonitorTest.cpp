#include "modules/storage/EMMCMonitor.h"
#include "OrvaUtils/IO/IFileSystem.h"
#include "modules/storage/EMMCStatistics.h"
#include "modules/storage/WriteCounter.h"
#include "tests/support/StatisticsFile.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

using namespace testing_panel;
using panel::Behaviour;

namespace {

constexpr std::uint64_t most = 0xFFFFFFFFFFFFFFFF;

using Values = std::vector<std::uint64_t>; // in the order of the record

Values valuesOf(const EMMCStatistics& record) {
    return {record.sessionWriteCount, record.sessionDuration, record.totalWriteCount, record.totalDuration};
}

std::uint64_t timeOf(const std::function<void()>& operation) { // panel ms
    const std::uint64_t begun = driver().status().time;
    operation();
    return driver().status().time - begun;
}

void count(std::uint32_t value) {
    devices().setValues("SHC1", {value});
}

} // namespace

TEST(WriteCounter, IsTheDriversCountOrNothing) {
    count(0xFFFFFFFE);
    EXPECT_EQ(readWriteCounter(), 0xFFFFFFFE);
    devices().setBehaviour("SHC1", {Behaviour::Kind::refuse, 31}, "count");
    startTrace();
    EXPECT_EQ(readWriteCounter(), 0U);
    EXPECT_EQ(trace().size(), 3U) << "closed as well";
    devices().setPresent("SHC1", false);
    startTrace();
    EXPECT_EQ(readWriteCounter(), 0U);
    EXPECT_EQ(trace().size(), 1U) << "nothing to ask or to close";
}

TEST(EMMCStatistics, AreReadAsFarAsTheyAreThere) {
    EXPECT_EQ(valuesOf(EMMCStatistics::load()), (Values{0, 0, 0, 0})) << "there is no file";
    constexpr std::uint64_t upper = 0x100000000;
    const struct {
        std::vector<std::string> texts;
        Values values;
    } cases[] = {
        {{"1", "2", "3", "4", "5", "6"}, {upper + 2, 3, 4 * upper + 5, 6}},
        {{"-", "2", "3", "4", "5", "6"}, {2, 3, 4 * upper + 5, 6}},
        {{"1", "-", "3", "4", "5", "6"}, {upper, 3, 4 * upper + 5, 6}},
        {{"1", "2", "-", "4", "5", "6"}, {upper + 2, 0, 4 * upper + 5, 6}},
        {{"1", "2", "3", "-", "5", "6"}, {upper + 2, 3, 5, 6}},
        {{"1", "2", "3", "4", "-", "6"}, {upper + 2, 3, 4 * upper, 6}},
        {{"1", "2", "3", "4", "5", "-"}, {upper + 2, 3, 4 * upper + 5, 0}},
        {{"", "x", "3s", "4294967295", "4294967295", "4294967295"}, {0, 3, most, 4294967295}},
        {{}, {0, 0, 0, 0}},
    };
    for (const auto& each : cases) {
        writeFile(statisticsPath, statisticsFile(each.texts));
        EXPECT_EQ(timeOf([&] { EXPECT_EQ(valuesOf(EMMCStatistics::load()), each.values); }), 0U)
            << statisticsFile(each.texts);
    }
}

TEST(EMMCStatistics, AreGivenUpAfterThreeAttemptsToReadThem) {
    for (const char* content : {"", "<EMMC><Settings>", "<EMMC/>", "<Other><Settings/></Other>"}) {
        writeFile(statisticsPath, content);
        EXPECT_EQ(timeOf([] { EXPECT_EQ(valuesOf(EMMCStatistics::load()), (Values{0, 0, 0, 0})); }), 300U) << content;
    }
    writeFile(statisticsPath, statisticsFile({"0", "1", "2", "0", "3", "4"}));
    failCall("CreateFileW", 1);
    failCall("CreateFileW", 2);
    EXPECT_EQ(timeOf([] { EXPECT_EQ(valuesOf(EMMCStatistics::load()), (Values{1, 2, 3, 4})); }), 200U);
}

TEST(EMMCStatistics, AreWrittenInAtMostThreeAttempts) {
    const EMMCStatistics statistics{1, 2, 3, 4};
    EXPECT_EQ(timeOf([&] { EMMCStatistics::save(statistics); }), 300U) << "there is no folder";
    EXPECT_FALSE(exists(statisticsPath));
    writeFile(statisticsPath, "what was there, and longer than what comes" + std::string(1000, '.'));
    failCall("WriteFile", 1);
    EXPECT_EQ(timeOf([&] { EMMCStatistics::save(statistics); }), 100U);
    EXPECT_EQ(readFile(statisticsPath), statisticsFile({"0", "1", "2", "0", "3", "4"}));
}

// Where the statistics' thread may come to when nobody has stopped it.
TEST(EMMCStatistics, AreWrittenWhenTheProcessHasDeletedItsFileSystem) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] {
        std::atexit([] { // before the file system is made: runs when it has gone
            EMMCStatistics::save({1, 2, 3, 4});
            const bool areThere = valuesOf(EMMCStatistics::load()) == Values{1, 2, 3, 4};
            panel::Panel(panelDirectory()).off(); // or its disappearance would end this process
            std::filesystem::remove_all(panelDirectory());
            std::_Exit(areThere ? 7 : 8);
        });
        writeFile(statisticsPath, "");
        OrvaUtils::IO::getFileSystem();
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(7), "");
}

// A count is written with one divisor and read with another: each time that it is loaded and saved it may grow.
TEST(EMMCStatistics, GrowFrom4294967295On) {
    const struct {
        std::uint64_t saved;
        const char* high;
        const char* low;
        std::uint64_t loaded;
    } cases[] = {
        {4294967294, "0", "4294967294", 4294967294},  {4294967295, "1", "4294967295", 8589934591},
        {8589934591, "2", "4294967295", 12884901887}, {4294967296, "1", "0", 4294967296},
        {8589934589, "1", "4294967293", 8589934589},  {8589934590, "2", "4294967294", 12884901886},
        {most - 1, "0", "4294967294", 4294967294},    {most, "1", "4294967295", 8589934591},
    };
    writeFile(statisticsPath, "");
    for (const auto& [saved, high, low, loaded] : cases) {
        EMMCStatistics::save({saved, 0, saved, 0});
        EXPECT_EQ(readFile(statisticsPath), statisticsFile({high, low, "0", high, low, "0"}));
        EXPECT_EQ(valuesOf(EMMCStatistics::load()), (Values{loaded, 0, loaded, 0}));
    }
}

TEST(EMMCMonitor, TakesTheFileAsItIsAtEachUpdate) {
    writeFile(statisticsPath, "");
    EMMCMonitor monitor;
    ASSERT_TRUE(monitor.start());
    count(7);
    pass(0);
    driver().addFault({"WaitForSingleObject", "", 0, 2, 2}); // a wait that is refused is tried again
    writeFile(statisticsPath, statisticsFile({"0", "0", "0", "1", "4294967290", "4294967000"}));
    pass(300000);
    EXPECT_EQ(readFile(statisticsPath), statisticsFile({"0", "7", "300", "2", "1", "4"})) << "a duration begins anew";
    writeFile(statisticsPath, statisticsFile({"0", "9", "0", "0", "1", "0"}));
    pass(300000);
    EXPECT_EQ(readFile(statisticsPath), statisticsFile({"0", "7", "300", "1", "4294967295", "300"}))
        << "less than nothing";
    count(0xFFFFFFFF);
    writeFile(statisticsPath, statisticsFile({"0", "0", "0", "0", "1000", "0"}));
    pass(300000);
    EXPECT_EQ(readFile(statisticsPath), statisticsFile({"1", "4294967295", "300", "1", "999", "300"}))
        << "no upper half for the session";
    pass(300000);
    EXPECT_EQ(readFile(statisticsPath), statisticsFile({"1", "4294967295", "600", "0", "999", "600"}));
    monitor.stop();
    EXPECT_FALSE(monitor.start()) << "it is for once";
}
