#include "tests/support/RotatedFiles.h"
#include "tests/support/RotatingLog.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/OtherThread.h"

namespace {

// A log that several threads have written to.
struct RotatedLog : Logger {
    RotatedLog(std::int32_t fileCount, std::int64_t lines) {
        rotating_log::setUp(*this, fileCount);
        if (fileCount > 2) {
            write(L"9/0", LogLevel::Info); // of two files they open the first, too
        }
        const auto thread = [&](unsigned number) {
            return OtherThread([this, number, lines] { rotating_log::write(*this, number, lines); });
        };
        OtherThread threads[rotating_log::THREADS] = {thread(0), thread(1), thread(2), thread(3)};
    }
};

// The platform deletes no file that is open.
unsigned openFiles() {
    unsigned left = 0;
    for (const std::string& name : testing_panel::list("\\Log")) {
        left += !DeleteFileW((L"\\Log\\" + OrvaUtils::toWide(name)).c_str());
    }
    return left;
}

} // namespace

TEST(LoggerStress, LosesNoLineOfSeveralThreads) {
    const RotatedLog log(rotating_log::MANY_FILES, 100000);
    rotating_log::expectAllLines(testing_panel::hostPath("\\Log"));
    EXPECT_EQ(openFiles(), 1U) << "the current one";
}

TEST(LoggerStress, WritesWholeLinesToItsFilesOnly) {
    for (const auto& [count, names] :
         {std::pair{2, std::vector<std::string>{"log0.txt", "log1.txt"}}, {1, {"log0.txt"}}}) {
        {
            const RotatedLog log(count, 2000);
            rotating_log::readLines(testing_panel::hostPath("\\Log"));
            EXPECT_EQ(testing_panel::list("\\Log"), names);
        }
        EXPECT_EQ(openFiles(), 0U);
    }
}
