// The log's files over several helper processes in turn.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* firstFile = "\\MMCMemory\\Tarvex\\helper_log0.txt";
constexpr const char* secondFile = "\\MMCMemory\\Tarvex\\helper_log1.txt";
constexpr std::size_t fileLimit = 102400; // bytes, and one line more

void runOnce(ScenarioPanel& panel, int messages) {
    panel.startInPlace();
    for (int index = 0; index < messages; ++index) {
        panel.command(0);
        panel.driver().advance(1); // the newer file is known by its time
    }
    EXPECT_EQ(panel.terminate(), 0U);
    panel.driver().advance(1000);
}

} // namespace

TEST(Log, GoesOnInTheNewestFileAndRotatesBetweenTwo) {
    ScenarioPanel panel;
    panel.install();
    runOnce(panel, 0);
    const std::string first = panel.read(firstFile);
    runOnce(panel, 900); // past the limit of the first file
    EXPECT_EQ(panel.read(firstFile).find(first), 0U);
    EXPECT_GT(panel.read(firstFile).size(), fileLimit);
    EXPECT_LT(panel.read(firstFile).size(), fileLimit + 100);
    const std::string second = panel.read(secondFile);
    EXPECT_LT(second.size(), fileLimit);
    runOnce(panel, 0); // a new process finds the newer file
    EXPECT_EQ(panel.read(secondFile).find(second), 0U);
    EXPECT_GT(panel.read(secondFile).size(), second.size());
    runOnce(panel, 1100); // back to the first file, which starts anew
    EXPECT_EQ(panel.read(firstFile).find(first), std::string::npos);
    EXPECT_GT(panel.read(secondFile).size(), fileLimit);
    EXPECT_EQ(panel.lastLines(1), Lines{"INFO;Helper terminated"});
    for (const char* file : {firstFile, secondFile}) {
        const std::string text = panel.read(file);
        EXPECT_TRUE(text.ends_with('\n'));
        EXPECT_LE(text.size(), fileLimit + 100);
    }
}

TEST(Log, IsCreatedWithItsFolderAndSilentWhereItCannotBe) {
    ScenarioPanel panel;
    panel.put("\\Temp\\TarvexHelper.exe", helperFile());
    panel.write("\\MMCMemory\\Tarvex", "a file where the folder should be");
    EXPECT_EQ(panel.run("\\Temp\\TarvexHelper.exe"), 1U); // nothing can be installed, and nothing logged
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex"), "a file where the folder should be");
}
