// Block devices that come and go: message queues, device notifications, stores and their partitions.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <msgqueue.h>
#include <pnp.h>
#include <storemgr.h>
#include <windows.h>

#include <cstring>

using namespace testing_panel;

namespace {

constexpr GUID blockDevices = {0xA4E7EDDA, 0xE575, 0x4252, {0x9D, 0x6B, 0x41, 0x95, 0xD4, 0x8B, 0xB8, 0x65}};

HANDLE makeQueue() {
    const MSGQUEUEOPTIONS options{sizeof options, 0, 0, 160, TRUE};
    return CreateMsgQueue(nullptr, &options);
}

std::wstring text(const std::uint16_t* characters) {
    std::wstring result;
    for (; *characters; ++characters)
        result += static_cast<wchar_t>(*characters);
    return result;
}

// The oldest message: "+DSK1:", "-DSK1:"; empty: there is none.
std::wstring next(HANDLE queue) {
    std::uint16_t message[80] = {};
    DWORD size = 0;
    DWORD flags = 0;
    if (!ReadMsgQueue(queue, message, sizeof message, &size, 0, &flags))
        return {};
    DEVDETAIL detail;
    std::memcpy(&detail, message, sizeof detail);
    const std::wstring name = text(message + offsetof(DEVDETAIL, szName) / 2);
    EXPECT_EQ(std::memcmp(&detail.guidDevClass, &blockDevices, sizeof blockDevices), 0);
    EXPECT_EQ(detail.cbName, static_cast<int>(2 * name.size() + 2));
    EXPECT_EQ(size, 28U + static_cast<DWORD>(detail.cbName));
    return (detail.fAttached ? L"+" : L"-") + name;
}

panel::Panel thePanel() {
    return panel::Panel(panelDirectory());
}

} // namespace

TEST(Notifications, AnnounceWhatIsThereAndWhatComesAndGoes) {
    const FreshFolder folder;
    thePanel().plug({{{folder.path, "Hard Disk"}}});
    const HANDLE queue = makeQueue();
    const HANDLE late = makeQueue();
    EXPECT_EQ(WaitForSingleObject(queue, 0), WAIT_TIMEOUT);
    const HANDLE all = RequestDeviceNotifications(&blockDevices, queue, TRUE);
    const HANDLE fresh = RequestDeviceNotifications(nullptr, late, FALSE); // every class
    ASSERT_TRUE(all && fresh);
    EXPECT_EQ(WaitForSingleObject(queue, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(queue, 0), WAIT_OBJECT_0); // until it is read
    EXPECT_EQ(next(queue), L"+DSK1:");
    EXPECT_EQ(WaitForSingleObject(queue, 0), WAIT_TIMEOUT);
    thePanel().plug({{{folder.path, "USB Disk"}}});
    thePanel().disks().unplug("Hard Disk");
    thePanel().plug({{{folder.path, "Hard Disk"}}}); // takes the free name
    for (const HANDLE each : {queue, late})
        for (const wchar_t* message : {L"+DSK2:", L"-DSK1:", L"+DSK1:", L""})
            EXPECT_EQ(next(each), message);
    EXPECT_TRUE(StopDeviceNotifications(all));
    EXPECT_FALSE(StopDeviceNotifications(all));
    thePanel().disks().unplug("USB Disk");
    EXPECT_EQ(next(queue), L"");
    EXPECT_EQ(next(late), L"-DSK2:");
    EXPECT_TRUE(CloseMsgQueue(queue));
    EXPECT_TRUE(CloseHandle(late)); // as good
    thePanel().disks().unplug("Hard Disk"); // nobody reads it
}

TEST(Stores, OpenWhenTheyAreReadyAndListTheirPartitions) {
    const FreshFolder folder;
    panel::Disk disk;
    disk.readyAfter = 1000;
    disk.partitions = {{folder.path, "Hard Disk"}, {"", "", 0x2}, {folder.path, "\u00dcSB", 0x10}};
    thePanel().plug(disk);
    thePanel().plug({{}, panel::never}); // neither ready nor formatted
    thePanel().plug({});
    EXPECT_EQ(OpenStore(L"DSK1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
    Sleep(1000);
    const HANDLE store = OpenStore(L"dsk1:");
    ASSERT_NE(store, INVALID_HANDLE_VALUE);
    PARTINFO info{};
    EXPECT_EQ(FindFirstPartition(store, &info), INVALID_HANDLE_VALUE); // the size is not set
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    info.cbSize = sizeof info;
    const HANDLE search = FindFirstPartition(store, &info);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    EXPECT_EQ(text(info.szVolumeName), L"\\Hard Disk");
    EXPECT_EQ(text(info.szPartitionName), L"PART00");
    EXPECT_EQ(info.dwAttributes, PARTITION_ATTRIBUTE_MOUNTED);
    EXPECT_TRUE(FindNextPartition(search, &info));
    EXPECT_EQ(text(info.szVolumeName), L"");
    EXPECT_EQ(info.dwAttributes, 2U);
    EXPECT_TRUE(FindNextPartition(search, &info));
    EXPECT_EQ(text(info.szVolumeName), L"\\\u00dcSB");
    EXPECT_FALSE(FindNextPartition(search, &info));
    EXPECT_FALSE(CloseHandle(search)); // has a function of its own
    EXPECT_TRUE(FindClosePartition(search));
    EXPECT_FALSE(FindNextPartition(search, &info));

    EXPECT_EQ(OpenStore(L"DSK2:"), INVALID_HANDLE_VALUE);
    const HANDLE empty = OpenStore(L"DSK3:");
    EXPECT_EQ(FindFirstPartition(empty, &info), INVALID_HANDLE_VALUE);
    thePanel().disks().unplug("DSK1:");
    EXPECT_EQ(FindFirstPartition(store, &info), INVALID_HANDLE_VALUE); // gone under its feet
    EXPECT_TRUE(CloseHandle(store));
    EXPECT_TRUE(CloseHandle(empty));
    EXPECT_FALSE(DismountStore(empty));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}
