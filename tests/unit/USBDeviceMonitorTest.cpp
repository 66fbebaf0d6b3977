#include "modules/usbconfig/USBDeviceMonitor.h"
#include "OrvaUtils/LoadLibraryException.h"
#include "app/log/Logger.h"
#include "modules/storage/StorageManager.h"
#include "modules/usbconfig/UsbDeviceException.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace testing_panel;

namespace {

using Events = std::vector<std::wstring>;

// Plugs a disk with mounted partitions of these names; "-": one that is not mounted.
std::string plug(const std::vector<std::string>& volumes, std::uint64_t readyAfter = 0) {
    const FreshFolder folder;
    panel::Disk disk;
    disk.readyAfter = readyAfter;
    for (const std::string& volume : volumes) {
        const bool mounted = volume != "-";
        disk.partitions.push_back(
            {mounted ? folder.path : "", mounted ? volume : "", mounted ? panel::mountedPartition : 0});
    }
    return panel::Panel(panelDirectory()).plug(disk);
}

void unplug(const std::string& device) {
    panel::Panel(panelDirectory()).disks().unplug(device);
}

// "0 DSK1: \Hard Disk"
class Recorder : public USBDeviceMonitorObserver {
public:
    void onDeviceEvent(const USBDeviceEvent& event) override {
        events.push_back(std::to_wstring(event.type) + L' ' + event.deviceName + L' ' + event.volumeName);
    }
    Events events;
};

class Thrower : public USBDeviceMonitorObserver {
public:
    explicit Thrower(bool familiar) : own(familiar) {}
    void onDeviceEvent(const USBDeviceEvent&) override {
        if (own) {
            throw OrvaUtils::Exception(L"thrown by an observer");
        }
        throw std::runtime_error("hidden");
    }

private:
    bool own;
};

void logInto(std::int32_t threshold) {
    writeFile("\\Log\\log.txt", "");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    Logger::instance().setThreshold(threshold);
}

std::string logged() {
    return withoutStamps(readFile("\\Log\\log.txt"));
}

} // namespace

TEST(USBDeviceMonitor, TellsOfVolumesAndOfDevicesThatGo) {
    logInto(LogLevel::Debug);
    plug({"Hard Disk", "-", "USB Disk"});
    Recorder recorder;
    Recorder twice;
    Recorder gone;
    USBDeviceMonitor monitor;
    monitor.addObserver(&twice);
    monitor.addObserver(&recorder);
    monitor.addObserver(&twice);
    monitor.addObserver(&gone);
    monitor.removeObserver(&gone);
    EXPECT_TRUE(monitor.start());
    EXPECT_FALSE(monitor.start());
    pass(500);
    plug({}, 0); // no partitions
    plug({"\xC3\x84"}, 1300);
    pass(500);
    EXPECT_EQ(recorder.events, (Events{L"0 DSK1: \\Hard Disk", L"0 DSK1: \\USB Disk"}));
    unplug("DSK1:"); // told of when the slow one is through
    pass(999);
    EXPECT_EQ(recorder.events.size(), 2U);
    pass(1);
    monitor.stop();
    EXPECT_FALSE(monitor.start()) << "it is for once";
    EXPECT_EQ(gone.events, Events{});
    const Events all = {L"0 DSK1: \\Hard Disk", L"0 DSK1: \\USB Disk", L"0 DSK3: \\\u00C4", L"1 DSK1: "};
    EXPECT_EQ(recorder.events, all);
    EXPECT_EQ(twice.events.size(), 2 * all.size());
    EXPECT_EQ(logged(), "DEBUG;Attached device DSK1:\nDEBUG;Volume name \\Hard Disk\nDEBUG;Volume name \\USB Disk\n"
                        "DEBUG;Attached device DSK2:\nDEBUG;Attached device DSK3:\nDEBUG;Volume name \\\xC4\n"
                        "DEBUG;Detached device DSK1:\n");
}

TEST(USBDeviceMonitor, EndsWithAnObserverThatThrows) {
    logInto(LogLevel::Info);
    for (const bool familiar : {true, false}) {
        Thrower thrower(familiar);
        Recorder recorder;
        USBDeviceMonitor monitor;
        monitor.addObserver(&thrower);
        monitor.addObserver(&recorder);
        EXPECT_TRUE(monitor.start());
        const std::string device = plug({"Hard Disk"});
        pass(500);
        unplug(device);
        pass(500);
        EXPECT_NO_THROW(monitor.stop());
        EXPECT_EQ(recorder.events, Events{});
    }
    EXPECT_EQ(logged(), "ERROR;thrown by an observer\nERROR;Generic exception\n");
}

TEST(USBDeviceMonitor, NeedsAnEventButMissesNoThread) {
    const auto failure = messageOf<UsbDeviceException>;
    failCall("CreateEventW");
    EXPECT_EQ(failure([] { USBDeviceMonitor monitor; }), L"Cannot create event");
    plug({}, 60000);
    USBDeviceMonitor monitor;
    failCall("CreateThread");
    EXPECT_TRUE(monitor.start());
    EXPECT_TRUE(monitor.start()) << "it did not run";
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"Failed to terminate monitor thread");
    pass(60000);
}

TEST(USBDeviceMonitor, ClosesWhatItListenedToAndNothingElse) {
    startTrace();
    auto* const monitor = new USBDeviceMonitor;
    EXPECT_TRUE(monitor->start());
    stopAndDelete(monitor);
    EXPECT_EQ(trace({"StopDeviceNotifications"}).size(), 1U);
    EXPECT_EQ(trace({"CloseMsgQueue"}).size(), 1U);
    EXPECT_EQ(trace({"CloseHandle"}).size(), 0U) << "neither the events nor the thread";
}

TEST(StorageManager, NeedsEveryFunctionAndTriesAgain) {
    const auto failure = [] { return messageOf<OrvaUtils::LoadLibraryException>([] { getStorageManager(); }); };
    failCall("LoadLibraryW");
    EXPECT_EQ(failure(), L"Load coredll.dll failed");
    failCall("GetProcAddressW", 5);
    EXPECT_EQ(failure(), L"Get address of FindNextStore failed");
    failCall("GetProcAddressW", 21);
    EXPECT_EQ(failure(), L"Get address of FindClosePartition failed");
    startTrace();
    EXPECT_EQ(failure(), L"none");
    EXPECT_EQ(failure(), L"none");
    EXPECT_EQ(trace({"GetProcAddressW"}).size(), 21U) << "once for all";
    EXPECT_EQ(trace({"FreeLibrary"}).size(), 0U);
    EXPECT_EQ(getStorageManager().openStore(L"DSK1:"), INVALID_HANDLE_VALUE);
}
