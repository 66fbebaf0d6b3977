// Drivers, and the flash volume's write protection.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

using namespace testing_panel;
using panel::Behaviour;

namespace {

constexpr DWORD readLevels = 0x01130408;
constexpr DWORD writeLevels = 0x0113040C;
constexpr DWORD beep = 0x01012EF4;
constexpr DWORD writable = 0x70230;
constexpr DWORD readOnly = 0x7022C;

using Words = std::vector<std::uint32_t>;

HANDLE openDevice(const wchar_t* name) {
    return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                       FILE_FLAG_RANDOM_ACCESS, nullptr);
}

DWORD control(HANDLE device, DWORD code, Words input, DWORD outputSize = 0, Words* output = nullptr) {
    Words answer(4, 99);
    DWORD returned = 99;
    const BOOL granted =
        DeviceIoControl(device, code, input.empty() ? nullptr : input.data(), static_cast<DWORD>(4 * input.size()),
                        outputSize ? answer.data() : nullptr, outputSize, &returned, nullptr);
    EXPECT_TRUE(!granted || returned <= outputSize);
    answer.resize(granted ? returned / 4 : 0);
    if (output)
        *output = answer;
    return granted ? 0 : GetLastError();
}

DWORD protect(DWORD code) {
    const HANDLE volume = openDevice(L"\\NANDFlash\\Vol:");
    EXPECT_NE(volume, INVALID_HANDLE_VALUE);
    const DWORD error = DeviceIoControl(volume, code, nullptr, 0, nullptr, 0, nullptr, nullptr) ? 0 : GetLastError();
    CloseHandle(volume);
    return error;
}

DWORD errorOf(BOOL done) {
    return done ? 0 : GetLastError();
}

} // namespace

TEST(Devices, AreOpenedByTheirNamesIfThePanelHasThem) {
    for (const wchar_t* name : {L"BKL1:", L"bzr1:", L"\\SHC1:", L"NANDFlash\\vol:"}) {
        const HANDLE device = openDevice(name);
        EXPECT_NE(device, INVALID_HANDLE_VALUE);
        DWORD count = 0;
        EXPECT_FALSE(WriteFile(device, "x", 1, &count, nullptr));
        EXPECT_TRUE(CloseHandle(device));
        EXPECT_FALSE(DeviceIoControl(device, readLevels, nullptr, 0, nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(openDevice(L"UIO1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    devices().setPresent("SHC1", false);
    EXPECT_EQ(openDevice(L"SHC1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    devices().setPresent("SHC1", true);
    devices().setBehaviour("SHC1", {Behaviour::Kind::refuse, 5}, "open");
    EXPECT_EQ(openDevice(L"SHC1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 5U);
}

TEST(Devices, TakeRequestsOfTheirOwnShapeOnly) {
    const HANDLE backlight = openDevice(L"BKL1:");
    EXPECT_EQ(control(backlight, readLevels, {}, 12), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(control(backlight, writeLevels, {1, 2, 3}), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(control(backlight, beep, {1000, 50}), ERROR_NOT_SUPPORTED);
    const HANDLE buzzer = openDevice(L"BZR1:");
    EXPECT_EQ(control(buzzer, beep, {1000, 1001}), ERROR_INVALID_PARAMETER);
    const HANDLE file = CreateFileW(L"\\f", GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(control(file, beep, {1000, 50}), ERROR_INVALID_HANDLE);
}

TEST(Devices, KeepARecordOfWhatIsAskedOfThem) {
    Sleep(1500);
    const HANDLE device = openDevice(L"BKL1:");
    devices().setBehaviour("BKL1", {Behaviour::Kind::refuse, 21}, "write");
    EXPECT_EQ(control(device, writeLevels, {7, 1, 8, 1}), 21U);
    EXPECT_EQ(driver().status().backLight, (Words{200, 1, 200, 1}));
    EXPECT_EQ(control(device, readLevels, {}, 16), 0U);
    devices().setBehaviour("BKL1", {});
    EXPECT_EQ(control(device, writeLevels, {7, 1, 8, 1}), 0U);
    control(openDevice(L"BZR1:"), beep, {2400, 50});
    EXPECT_EQ(readText(panelDirectory() / "devices/requests"),
              "      1500 TarvexHelper.exe#1 t1 BKL1 write 7 1 8 1 = error 21\n"
              "      1500 TarvexHelper.exe#1 t1 BKL1 read 200 1 200 1 = done\n"
              "      1500 TarvexHelper.exe#1 t1 BKL1 write 7 1 8 1 = done\n"
              "      1500 TarvexHelper.exe#1 t1 BZR1 beep 2400 50 = done\n");
    const std::vector<panel::Request> requests = devices().requests("bkl1");
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].operation, "write");
    EXPECT_EQ(requests[0].error, 21U);
}

TEST(Flash, RefusesEveryChangeWhileItIsProtected) {
    writeFile("\\NANDFlash\\there", "x");
    writeFile("\\NANDFlash\\folder\\file", "y");
    writeFile("\\MMCMemory\\source", "z");
    const auto open = [](const wchar_t* path, DWORD access, DWORD disposition) {
        const HANDLE file = CreateFileW(path, access, 0, nullptr, disposition, 0, nullptr);
        return file == INVALID_HANDLE_VALUE ? GetLastError() : errorOf(CloseHandle(file));
    };
    wchar_t shortcut[] = L"\\NANDFlash\\link.lnk";
    wchar_t target[] = L"\\x";
    // Every change in an order in which, without protection, all of them succeed.
    const auto attempt = [&] {
        return std::vector<DWORD>{
            open(L"\\NANDFlash\\new", GENERIC_WRITE, CREATE_NEW),
            open(L"NANDFLASH\\there", GENERIC_WRITE, OPEN_EXISTING),
            open(L"\\nandflash\\there", GENERIC_READ, TRUNCATE_EXISTING),
            errorOf(CopyFileW(L"\\MMCMemory\\source", L"\\NANDFlash\\copy", FALSE)),
            errorOf(CopyFileW(L"\\MMCMemory\\source", L"\\NANDFlash\\there", FALSE)),
            errorOf(MoveFileW(L"\\NANDFlash\\there", L"\\NANDFlash\\here")),
            errorOf(MoveFileW(L"\\NANDFlash\\here", L"\\MMCMemory\\moved")),
            errorOf(MoveFileW(L"\\MMCMemory\\moved", L"\\NANDFlash\\there")),
            errorOf(SetFileAttributesW(L"\\NANDFlash\\folder\\file", FILE_ATTRIBUTE_READONLY)),
            errorOf(SetFileAttributesW(L"\\NANDFlash\\folder\\file", FILE_ATTRIBUTE_NORMAL)),
            errorOf(CreateDirectoryW(L"\\NANDFlash\\sub", nullptr)),
            errorOf(SHCreateShortcut(shortcut, target)),
            errorOf(DeleteFileW(L"\\NANDFlash\\folder\\file")),
            errorOf(RemoveDirectoryW(L"\\NANDFlash\\folder")),
        };
    };
    const auto before = list("\\NANDFlash");
    std::vector<DWORD> wanted(14, ERROR_WRITE_PROTECT);
    wanted[6] = wanted[7] = ERROR_FILE_NOT_FOUND; // what is not there is not protected
    EXPECT_EQ(attempt(), wanted);
    EXPECT_EQ(list("\\NANDFlash"), before);
    EXPECT_EQ(readFile("\\NANDFlash\\there"), "x");
    EXPECT_EQ(open(L"\\NANDFlash\\there", GENERIC_READ, OPEN_EXISTING), 0U);
    EXPECT_FALSE(driver().status().flashWritable);

    EXPECT_EQ(protect(writable), 0U);
    EXPECT_TRUE(driver().status().flashWritable);
    EXPECT_EQ(attempt(), std::vector<DWORD>(14, 0));
    const HANDLE file = CreateFileW(L"\\NANDFlash\\there", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(protect(readOnly), 0U);
    DWORD count = 0;
    EXPECT_FALSE(WriteFile(file, "x", 1, &count, nullptr)); // also through what is open already
    EXPECT_EQ(GetLastError(), ERROR_WRITE_PROTECT);
}
