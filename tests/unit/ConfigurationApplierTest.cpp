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
    EXPECT_EQ(withoutStamps(readFile(LOG)), "DEBUG;Device Attached : DSK1: - Hard Disk\nDEBUG;File found\n"
                                            "DEBUG;Device Attached : DSK1: - \\USB Disk2\\\nDEBUG;File found\n"
                                            "ERROR;XML configuration;error;Generic Exception\n"
                                            "DEBUG;Device Attached : DSK1: - \\Hard Disk3\nDEBUG;File not found\n"
                                            "DEBUG;Device Attached : DSK1: - Storage Card\n"
                                            "DEBUG;Device Detached : DSK1: - \n");
}

TEST(RunProcessCommand, KeepsItsHandlesForGood) {
    put("\\Windows\\Tarvex.exe", programFile("Tarvex"));
    startTrace();
    for (const bool waits : {true, false}) {
        RunProcessCommand command;
        command.filePath = L"\\Windows\\Tarvex.exe";
        command.arguments = L"-from a test";
        command.waitCompletion = waits;
        command.execute();
    }
    const Lines waits = trace({"WaitForSingleObject"});
    ASSERT_EQ(waits.size(), 1U) << "one of the two is waited for";
    DWORD exitCode = STILL_ACTIVE;
    const auto process = static_cast<std::uintptr_t>(std::stoul(waits[0].substr(waits[0].find('(') + 1), nullptr, 16));
    EXPECT_TRUE(GetExitCodeProcess(reinterpret_cast<HANDLE>(process), &exitCode)) << "not open any more";
    EXPECT_NE(exitCode, STILL_ACTIVE);
}
