#include "OrvaUtils/IO/FileSystemException.h"
#include "app/ExitCode.h"
#include "app/FailureReport.h"
#include "app/HelperSettings.h"
#include "app/InitializeHelper.h"
#include "app/Installation.h"
#include "app/RunModuleManager.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcherException.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace testing_panel;

namespace {

const char* const HELPER_LOG = "\\MMCMemory\\Tarvex\\helper_log0.txt";

// The lines of the log without their time stamps.
std::string logged(const char* panelPath = HELPER_LOG) {
    return withoutStamps(readFile(panelPath));
}

// Of a start in place on a panel whose registry does not know the helper.
const std::string REGISTRATION = "INFO;Configuring my autorun\nINFO;Associate .osr file to Tarvex.exe\n";

const auto startFailure = messageOf<OrvaUtils::Exception>;

} // namespace

template<int>
class Numbered : public OrvaUtils::Exception {};

TEST(Startup, ReportsFailuresByTheirClass) {
    writeFile("\\Log\\unrelated", "");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    const std::function<void()> failures[] = {
        [] { throw OrvaUtils::Exception(); },
        [] { throw OrvaUtils::IO::FileSystemException(L"Invalid directory name"); },
        [] { throw IPCDispatcherException(L"Failed to create message only window"); },
        [] { throw Numbered<1>(); },
        [] { throw std::runtime_error("hidden"); },
        [] { throw 1; },
    };
    for (const auto& failure : failures) {
        exitCode = 0;
        try {
            failure();
        } catch (...) {
            reportFailure();
        }
        EXPECT_EQ(exitCode, 1);
    }
    EXPECT_EQ(logged("\\Log\\log.txt"), "ERROR;Exception OrvaUtils::Exception: Generic Exception\n"
                                        "ERROR;Exception OrvaUtils::IO::FileSystemException: Invalid directory name\n"
                                        "ERROR;Exception IPCDispatcherException: Failed to create message only window\n"
                                        "ERROR;Exception 8NumberedILi1EE: Generic Exception\n"
                                        "ERROR;Unexpected error\nERROR;Unexpected error\n");
}

TEST(Startup, CatchesWhateverIsThrown) {
    // Throws at the first line of each stage.
    struct : LogListener {
        void receive(const LogRecord& record) override {
            if (record.message != L"Init of Helper" && record.message != L"Module manager initialization") {
                return;
            }
            if (standard) {
                throw std::runtime_error("hidden");
            }
            throw 1;
        }
        bool standard = true;
    } listener;
    Logger::instance().addListener(&listener);
    std::string expected;
    for (const bool standard : {true, false}) {
        listener.standard = standard;
        HANDLE noLock = nullptr;
        exitCode = 0;
        EXPECT_FALSE(InitializeHelper(noLock));
        EXPECT_EQ(exitCode, 1);
        exitCode = 0;
        RunModuleManager();
        EXPECT_EQ(exitCode, 1);
        expected += "INFO;Init of Helper\nERROR;Unexpected error\n"
                    "INFO;Module manager initialization\nERROR;Unexpected error\n";
        EXPECT_EQ(logged(), expected);
    }
}

TEST(Startup, TidiesUpInTheRightPath) {
    writeFile("\\Old\\_rm_app.exe", "");
    writeFile("\\Old\\kept", "");
    writeFile("\\Busy\\_rm_dir\\file", "");
    writeFile("\\Odd\\_rmx", "");
    writeFile("\\MMCMemory\\Tarvex\\config.xml",
              "<OrvaTarvex><Settings><CleanupDirectories><Directory Name='\\Busy'/><Directory Name='\\Old'/>"
              "<Directory Name='\\Odd'/><Directory Name='\\Missing'/></CleanupDirectories></Settings></OrvaTarvex>");
    const HANDLE busy = CreateFileW(L"\\Busy\\_rm_dir\\file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    HANDLE noLock = nullptr;
    EXPECT_TRUE(InitializeHelper(noLock));
    EXPECT_EQ(logged(),
              "INFO;Init of Helper\nINFO;Path \\Busy not cleaned up\nINFO;Path \\Odd not cleaned up\n" + REGISTRATION);
    EXPECT_EQ(list("\\Old"), std::vector<std::string>{"kept"});
    EXPECT_EQ(list("\\Odd"), std::vector<std::string>{"_rmx"}) << "looked for, but never cleaned";
    EXPECT_EQ(HelperSettings().cleanupDirectories, (std::vector<std::wstring>{L"\\Busy", L"\\Odd"}));
    EXPECT_TRUE(CloseHandle(busy));
}

TEST(Installation, FindsTheApplicationOnADisk) {
    writeFile("\\Hard Disk\\Tarvex\\Tarvex.exe\\folder", "");
    EXPECT_FALSE(anyDiskHoldsApplication());
    EXPECT_EQ(startFailure([] { findApplicationSource(); }), L"Tarvex not found in any external disk");
    writeFile("\\Hard Disk2\\Tarvex\\Tarvex.exe", "");
    EXPECT_EQ(findApplicationSource(), L"Hard Disk2\\Tarvex");
}

TEST(Installation, CopiesTheHelperFile) {
    const auto copy = [](const wchar_t* source, const wchar_t* destination) {
        return startFailure([&] { copyHelperFile(source, destination); });
    };
    writeFile("\\S\\helper", "new");
    writeFile("\\D\\old", "old");
    writeFile("\\D\\locked", "old");
    ASSERT_TRUE(SetFileAttributesW(L"\\D\\locked", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(copy(L"\\S\\missing", L"\\D\\x"), L"Cannot find \\S\\missing to copy");
    EXPECT_EQ(copy(L"\\S", L"\\D\\x"), L"Cannot find \\S to copy");
    EXPECT_EQ(copy(L"\\S\\helper", L"\\D\\locked"), L"Cannot copy \\S\\helper to \\D\\locked");
    EXPECT_EQ(copy(L"\\S\\helper", L"\\E\\F\\x"), L"Cannot copy \\S\\helper to \\E\\F\\x") << "one level only";
    EXPECT_EQ(copy(L"\\S\\helper", L"\\D\\old"), L"none");
    EXPECT_EQ(readFile("\\D\\old"), "new");
    EXPECT_EQ(copy(L"\\S\\helper", L"\\E\\x"), L"none");
    EXPECT_EQ(readFile("\\E\\x"), "new");
}
