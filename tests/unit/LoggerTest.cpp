#include "app/log/Logger.h"
#include "tests/support/TestPanel.h"

#include <windows.h>

#include <gtest/gtest.h>

using namespace testing_panel;

namespace {

const char* const LOG0 = "\\Log\\helper_log0.txt";
const char* const LOG1 = "\\Log\\helper_log1.txt";

// A log as the helper sets it up, in a folder of its own.
struct HelperLog : Logger {
    HelperLog() {
        writeFile("\\Log\\unrelated", "");
        setDirectory(L"\\Log");
        setBaseName(L"helper_log");
        setMaxFiles(2);
        setMaxFileSize(102400);
    }
};

// The lines of a file without their time stamps.
std::string messages(const std::string& panelPath) {
    return withoutStamps(readFile(panelPath));
}

// Makes a file through the platform, so that its time is the panel's.
void touchFile(const wchar_t* path) {
    CloseHandle(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
}

struct RecordingListener : LogListener {
    void receive(const LogRecord& record) override {
        heard += record.message + L'/' + static_cast<wchar_t>(L'0' + record.level) + L' ';
    }
    std::wstring heard;
};

} // namespace

TEST(Logger, NamesAndAdmitsLevels) {
    HelperLog log;
    for (const std::int32_t level : {0, 1, 2, 3, 7, -1}) {
        log.write(L"two", level);
        EXPECT_EQ(log.admits(level), level <= 2);
    }
    log.setThreshold(7);
    for (const std::int32_t level : {3, 7, 8}) {
        log.write(L"seven", level);
    }
    log.setThreshold(0);
    log.write(L"zero", 1);
    EXPECT_EQ(messages(LOG0), "DISPLAY;two\nERROR;two\nINFO;two\nUNKNOWN;two\nDEBUG;seven\nUNKNOWN;seven\n");
}

TEST(Logger, RotatesThroughItsFiles) {
    writeFile(LOG0, std::string(102400, '-'));
    HelperLog log;
    log.write(L"full is not over", LogLevel::Info);
    EXPECT_TRUE(readFile(LOG0).ends_with(";INFO;full is not over\n"));
    EXPECT_GT(readFile(LOG0).size(), 102400U);

    writeFile(LOG1, "of an earlier round\n");
    log.write(L"first of the next", LogLevel::Info);
    log.write(std::wstring(102400, L'x'), LogLevel::Info);
    EXPECT_EQ(messages(LOG1), "INFO;first of the next\nINFO;" + std::string(102400, 'x') + "\n");

    failCall("CreateFileW"); // the file cannot be opened a second time: its own handle tells the size
    log.write(L"round again", LogLevel::Info);
    EXPECT_EQ(messages(LOG0), "INFO;round again\n");
}

TEST(Logger, ContinuesTheFileWrittenLast) {
    for (const std::uint64_t later : {5000, 5 * 86400000}) { // each half of a time decides once
        for (const wchar_t* last : {L"\\Log\\helper_log0.txt", L"\\Log\\helper_log1.txt"}) {
            HelperLog log;
            touchFile(L"\\Log\\helper_log0.txt");
            touchFile(L"\\Log\\helper_log1.txt");
            advance(later);
            touchFile(last);
            startTrace();
            log.write(L"here", LogLevel::Info);
            EXPECT_EQ(trace({"FindClose"}).size(), 1U);
            EXPECT_EQ(messages(std::filesystem::path(last).string()), "INFO;here\n");
        }
    }
    HelperLog log;
    touchFile(L"\\Log\\helper_log1.txt");
    touchFile(L"\\Log\\helper_log0.txt");
    log.write(L"the first of the same time", LogLevel::Info);
    EXPECT_EQ(messages(LOG0), "INFO;the first of the same time\n");
}

TEST(Logger, IgnoresOtherNames) {
    HelperLog log;
    touchFile(L"\\Log\\helper_log0.txt");
    advance(5000);
    for (const wchar_t* name : {L"helper_log5.txt", L"helper_log2.txt", L"helper_log.txt", L"helper_log1.bak",
                                L"helper_logA1.txt", L"old_helper_log1.txt", L"helper_log-1.txt"}) {
        touchFile((std::wstring(L"\\Log\\") + name).c_str());
    }
    log.write(L"here", LogLevel::Info);
    EXPECT_EQ(messages(LOG0), "INFO;here\n");
}

TEST(Logger, LosesLinesButLivesOn) {
    HelperLog log;
    log.setDirectory(L"\\Log\\missing");
    log.write(L"lost", LogLevel::Info);
    EXPECT_FALSE(exists("\\Log\\missing"));
    writeFile("\\Log\\missing\\folder", "");
    log.write(L"with \u00E9, \u20AC and \uFFFD", LogLevel::Info);
    // The next file cannot be opened: that line is lost, and the following one goes there.
    log.write(std::wstring(102400, L'x'), LogLevel::Info);
    failCall("CreateFileW", 2);
    log.write(L"lost too", LogLevel::Info);
    log.write(L"found", LogLevel::Info);
    EXPECT_TRUE(messages("\\Log\\missing\\helper_log0.txt").starts_with("INFO;with \xE9, ? and ?\nINFO;xxx"));
    EXPECT_EQ(messages("\\Log\\missing\\helper_log1.txt"), "INFO;found\n");
    // A write that fails takes its own line with it and no other.
    failCall("WriteFile");
    log.write(L"lost as well", LogLevel::Info);
    log.write(L"found again", LogLevel::Info);
    EXPECT_EQ(messages("\\Log\\missing\\helper_log1.txt"), "INFO;found\nINFO;found again\n");
}

TEST(Logger, HasOutputsBesideTheFile) {
    HelperLog log;
    log.setToFile(false);
    EXPECT_FALSE(log.isEnabled());
    EXPECT_FALSE(log.admits(LogLevel::Error));
    RecordingListener listener;
    log.addListener(&listener);
    log.setToConsole(true);
    log.setToDebugger(true);
    EXPECT_TRUE(log.isEnabled());
    testing::internal::CaptureStdout();
    startTrace();
    log.write(L"caf\u00E9", LogLevel::Info);
    log.write(L"three", LogLevel::Debug);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(";INFO;caf\xE9\n"));
    EXPECT_EQ(trace({"OutputDebugStringW"}).size(), 1U);
    EXPECT_EQ(listener.heard, L"caf\u00E9/2 ");
    EXPECT_FALSE(exists(LOG0));
}

TEST(Logger, HasAPathByDefaultAndByItsSettings) {
    writeFile("\\MMCMemory\\Tarvex\\unrelated", "");
    {
        Logger byDefault;
        byDefault.setImmediate(false);
        byDefault.write("caf\xE9", LogLevel::Info);
        byDefault.writeFormatted(L"%s of %d", std::wstring(600, L'x').c_str(), 7);
        EXPECT_FALSE(exists("\\MMCMemory\\Tarvex\\log0.txt")) << "at its end";
    }
    EXPECT_EQ(messages("\\MMCMemory\\Tarvex\\log0.txt"), "INFO;caf\xE9\nINFO;" + std::string(512, 'x') + '\n');
    HelperLog named;
    named.setFilePath(L"\\Log\\one.log");
    named.write(std::wstring(102400, L'x'), LogLevel::Info);
    named.write(L"anew", LogLevel::Info);
    EXPECT_EQ(messages("\\Log\\one.log"), "INFO;anew\n") << "the next file is the same";
}
