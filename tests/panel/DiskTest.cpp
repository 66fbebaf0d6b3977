// Queues of device notifications, stores and their partitions.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <msgqueue.h>
#include <pnp.h>
#include <storemgr.h>
#include <windows.h>

using namespace testing_panel;

namespace {

std::wstring text(const std::uint16_t* characters) {
    std::wstring result;
    for (; *characters; ++characters)
        result += static_cast<wchar_t>(*characters);
    return result;
}

panel::Panel thePanel() {
    return panel::Panel(panelDirectory());
}

} // namespace

TEST(Queues, DropWhatDoesNotFitAndCutWhatTheReaderHasNoRoomFor) {
    const auto make = [](DWORD messages, DWORD size) {
        const MSGQUEUEOPTIONS options{sizeof options, 0, messages, size, TRUE};
        const HANDLE queue = CreateMsgQueue(nullptr, &options);
        EXPECT_NE(RequestDeviceNotifications(nullptr, queue, TRUE), nullptr);
        return queue;
    };
    const auto read = [](HANDLE queue, DWORD bytes) {
        char message[160];
        DWORD size = 0;
        DWORD flags = 0;
        return ReadMsgQueue(queue, message, bytes, &size, 250, &flags) ? 0 : GetLastError();
    };
    EXPECT_EQ(RequestDeviceNotifications(nullptr, nullptr, TRUE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    const HANDLE narrow = make(0, 30); // too small for a device's name
    const HANDLE one = make(1, 160);
    for (const DWORD bytes : {160U, 4U}) {
        thePanel().plug({});
        thePanel().disks().unplug("DSK1:"); // finds the queue full
        EXPECT_EQ(read(one, bytes), bytes == 4 ? ERROR_INSUFFICIENT_BUFFER : 0U);
        EXPECT_EQ(read(one, 160), ERROR_TIMEOUT);
        EXPECT_EQ(read(narrow, 160), ERROR_TIMEOUT);
    }
    EXPECT_EQ(GetTickCount(), 1000U);
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
