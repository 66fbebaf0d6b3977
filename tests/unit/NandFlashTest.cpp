#include "modules/storage/NandFlash.h"

#include "modules/storage/FlashNotWritableException.h"
#include "modules/storage/FlashWriteGuard.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>
#include <windows.h>

using namespace testing_panel;
using panel::Behaviour;

namespace {

const auto flashFailure = messageOf<FlashNotWritableException>;

Lines requests() { // to the flash
    Lines operations;
    for (const panel::Request& request : devices().requests("NANDFlash")) {
        operations.push_back(request.operation);
    }
    return operations;
}

} // namespace

TEST(NandFlash, IsWhereAPathBeginsWithItsName) {
    for (const wchar_t* path : {L"\\NANDFlash", L"\\NANDFlash\\a", L"\\nandFLASH\\a", L"\\NANDFlashX"}) {
        EXPECT_TRUE(isOnNandFlash(path));
    }
    for (const wchar_t* path :
         {L"", L"\\NANDFlas", L"\\NANDFla", L"NANDFlash\\a", L"\\MMCMemory\\NANDFlash", L"\\NAND"}) {
        EXPECT_FALSE(isOnNandFlash(path));
    }
}

TEST(NandFlash, ClosesADriverThatRefusesAndTellsOfOneThatIsMissing) {
    devices().setBehaviour("NANDFlash", {Behaviour::Kind::refuse, 5}, "writable");
    startTrace();
    EXPECT_EQ(flashFailure(makeFlashWritable), L"Generic Exception");
    EXPECT_EQ(trace({"CloseHandle"}).size(), 1U);
    devices().setPresent("NANDFlash", false);
    startTrace();
    EXPECT_EQ(flashFailure(makeFlashReadOnly), L"Generic Exception");
    const Lines calls = trace();
    ASSERT_EQ(calls.size(), 3U) << "a failed open shows in the control call";
    EXPECT_TRUE(calls[0].starts_with("CreateFileW(\"\\NANDFlash\\Vol:\", 0xc0000000, 0, 3, 0x0) = ")) << calls[0];
    EXPECT_TRUE(calls[1].starts_with("DeviceIoControl(")) << calls[1];
}

TEST(FlashWriteGuard, UnlocksOnceForPathsOnTheFlashAndLocksAgain) {
    FlashWriteGuard guard;
    guard.relock();
    guard.unlockFor(L"\\MMCMemory\\a");
    EXPECT_EQ(requests(), Lines{});
    guard.unlockFor(L"\\NANDFlash\\a");
    guard.unlockFor(L"\\NANDFlash\\b");
    guard.relock();
    guard.relock();
    EXPECT_EQ(requests(), (Lines{"writable", "read-only"}));
}
