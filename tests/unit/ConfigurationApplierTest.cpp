#include "modules/usbconfig/ConfigurationApplier.h"
#include "app/log/Logger.h"
#include "modules/usbconfig/RunProcessCommand.h"
#include "modules/usbconfig/USBDeviceMonitor.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <memory>
#include <windows.h>

using namespace testing_panel;

namespace {

const char* const LOG = "\\Log\\log.txt";

// The lines of the log without their time stamps.
std::string logged() {
    std::string rest = readFile(LOG);
    std::string lines;
    for (std::size_t end; (end = rest.find('\n')) != std::string::npos; rest.erase(0, end + 1)) {
        lines += rest.substr(rest.find(';') + 1, end - rest.find(';'));
    }
    return lines;
}

} // namespace

TEST(ConfigurationApplier, SaysAtDebugLevelWhatItSees) {
    writeFile(LOG, "");
    writeFile("\\Hard Disk\\Tarvex.xml", "<Tarvex><Commands/></Tarvex>");
    writeFile("\\USB Disk2\\Tarvex.xml", "<Tarvex><Login/></Tarvex>");
    writeFile("\\Hard Disk3\\Tarvex.xml\\folder", "");
    writeFile("\\Storage Card\\Tarvex.xml", "<Other/>");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    Logger::instance().setThreshold(LogLevel::Debug);
    USBDeviceMonitor monitor;
    const std::unique_ptr<IModule> module(ConfigurationApplier::create(monitor));
    auto& applier = dynamic_cast<USBDeviceMonitorObserver&>(*module);
    for (const wchar_t* volume : {L"Hard Disk", L"\\USB Disk2\\", L"\\Hard Disk3", L"Storage Card"}) {
        applier.onDeviceEvent({USBDeviceEvent::Attached, L"DSK1:", volume});
    }
    applier.onDeviceEvent({USBDeviceEvent::Detached, L"DSK1:", {}});
    EXPECT_EQ(logged(), "DEBUG;Device Attached : DSK1: - Hard Disk\nDEBUG;File found\n"
                        "DEBUG;Device Attached : DSK1: - \\USB Disk2\\\nDEBUG;File found\n"
                        "ERROR;XML configuration;error;Generic Exception\n"
                        "DEBUG;Device Attached : DSK1: - \\Hard Disk3\nDEBUG;File not found\n"
                        "DEBUG;Device Attached : DSK1: - Storage Card\n"
                        "DEBUG;Device Detached : DSK1: - \n");
}

TEST(RunProcessCommand, KeepsItsHandlesForGood) {
    std::filesystem::create_directories(hostPath("\\Windows"));
    std::filesystem::copy_file(programFile("Tarvex"), hostPath("\\Windows\\Tarvex.exe"));
    startTrace();
    for (const bool waits : {true, false}) {
        RunProcessCommand command;
        command.filePath = L"\\Windows\\Tarvex.exe";
        command.arguments = L"-from a test";
        command.waitCompletion = waits;
        command.execute();
    }
    const std::string waited = "WaitForSingleObject(";
    std::vector<std::string> handles;
    for (const std::string& line : trace()) {
        if (line.rfind(waited, 0) == 0) {
            handles.push_back(line.substr(waited.size()));
        }
    }
    ASSERT_EQ(handles.size(), 1U) << "one of the two is waited for";
    DWORD exitCode = STILL_ACTIVE;
    const auto process = static_cast<std::uintptr_t>(std::stoul(handles[0], nullptr, 16));
    EXPECT_TRUE(GetExitCodeProcess(reinterpret_cast<HANDLE>(process), &exitCode)) << "not open any more";
    EXPECT_NE(exitCode, STILL_ACTIVE);
}
