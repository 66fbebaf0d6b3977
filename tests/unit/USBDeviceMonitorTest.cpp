#include "modules/usbconfig/USBDeviceMonitor.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

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
class DiskRecorder : public USBDeviceMonitorObserver {
public:
    void onDeviceEvent(const USBDeviceEvent& event) override {
        events.push_back(std::to_wstring(event.type) + L' ' + event.deviceName + L' ' + event.volumeName);
    }
    Events events;
};

} // namespace

TEST(USBDeviceMonitor, TellsOfVolumesAndOfDevicesThatGo) {
    plug({"Hard Disk", "-", "USB Disk"});
    DiskRecorder recorder;
    DiskRecorder gone;
    USBDeviceMonitor monitor;
    monitor.addObserver(&recorder);
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
    EXPECT_EQ(recorder.events,
              (Events{L"0 DSK1: \\Hard Disk", L"0 DSK1: \\USB Disk", L"0 DSK3: \\\u00C4", L"1 DSK1: "}));
}

TEST(USBDeviceMonitor, RemovesAnObserverThatItCalls) {
    struct Busy : USBDeviceMonitorObserver {
        void onDeviceEvent(const USBDeviceEvent&) override {
            if (monitor != nullptr) {
                monitor->leaveObserver();
            }
            Sleep(3995);
        }
        USBDeviceMonitor* monitor = nullptr;
    };
    for (const bool leaves : {false, true}) {
        USBDeviceMonitor monitor;
        Busy busy;
        busy.monitor = leaves ? &monitor : nullptr;
        monitor.addObserver(&busy);
        monitor.start();
        const std::string device = plug({"Hard Disk"});
        pass(1000);
        const DWORD begun = GetTickCount();
        monitor.removeObserver(&busy);
        EXPECT_EQ(GetTickCount() - begun, leaves ? 0U : 3500U);
        monitor.stop();
        unplug(device);
    }
}
