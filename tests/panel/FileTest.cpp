// The panel's file system: as strict as the real one, or the code that copes with the real one is never run.
#include "tests/support/TestPanel.h"

#include <crt.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace testing_panel;

namespace {

HANDLE openFile(const wchar_t* path, DWORD access, DWORD share, DWORD disposition) {
    return CreateFileW(path, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::vector<std::wstring> find(const wchar_t* pattern) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW data{};
    const HANDLE search = FindFirstFileW(pattern, &data);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        names.emplace_back(data.cFileName);
    while (FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    return names;
}

using Names = std::vector<std::wstring>;

} // namespace

TEST(Paths, AreCaseBlindAndCaseKeepingWithOrWithoutALeadingSeparator) {
    writeFile("\\MMCMemory\\Mixed Case\\File.TXT", "x");
    for (const wchar_t* path : {L"\\MMCMemory\\Mixed Case\\File.TXT", L"\\mmcmemory\\MIXED CASE\\file.txt",
                                L"MMCMemory\\mixed case\\File.txt"})
        EXPECT_EQ(GetFileAttributesW(path), FILE_ATTRIBUTE_NORMAL) << std::filesystem::path(path);
    EXPECT_EQ(GetFileAttributesW(L"\\MMCMemory\\mixed case"), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(CreateDirectoryW(L"\\mmcmemory\\New \u00C4\u00E9", nullptr));
    EXPECT_EQ(GetFileAttributesW(L"\\mmcmemory\\NEW \u00E4\u00C9"), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(exists("\\MMCMemory\\New \u00C4\u00E9"));
}

TEST(Paths, AreFoundByAnyCaseAsSoonAsTheyAreThere) {
    const auto found = [](const std::wstring& path) {
        return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    };
    const auto isMade = [](HANDLE file) { return CloseHandle(file) != FALSE; };
    std::filesystem::copy_file(programFile("Actor"), hostPath("\\MMCMemory\\Actor.exe"));
    writeFile("\\MMCMemory\\Source", "");
    std::filesystem::create_directory(panelDirectory().string() + "-disk");
    const struct {
        const wchar_t* name; // by which it is found
        std::function<bool()> make;
    } cases[] = {
        {L"\\MMCMemory\\FOLDER", [] { return CreateDirectoryW(L"MMCMemory\\Folder", nullptr) != FALSE; }},
        {L"\\MMCMemory\\FOLDER\\OPENED",
         [&] { return isMade(openFile(L"MMCMemory\\folder\\Opened", GENERIC_WRITE, 0, CREATE_NEW)); }},
        {L"\\MMCMemory\\FOLDER\\COPIED",
         [] { return CopyFileW(L"MMCMemory\\Source", L"MMCMemory\\folder\\Copied", TRUE) != FALSE; }},
        {L"\\MMCMemory\\FOLDER\\MOVED",
         [] { return MoveFileW(L"MMCMemory\\folder\\COPIED", L"MMCMemory\\folder\\Moved") != FALSE; }},
        {L"\\MMCMemory\\FOLDER\\COPIED", // gone before
         [] { return CopyFileW(L"MMCMemory\\Source", L"MMCMemory\\folder\\cOPied", TRUE) != FALSE; }},
        {L"\\MMCMemory\\FOLDER\\OTHER",
         [] {
             const auto other =
                 driver().start("\\MMCMemory\\Actor.exe", "move \\MMCMemory\\folder\\moved \\MMCMemory\\folder\\Other");
             return driver().waitForExit(other, 60000) == 0U;
         }},
        {L"\\MMCMemory\\FOLDER\\FIRST OF MANY",
         [] {
             bool all = CreateDirectoryW(L"\\MMCMemory\\folder\\First of many", nullptr) != FALSE;
             for (int count = 0; count < 300; ++count)
                 all = all && CreateDirectoryW((L"\\Windows\\" + std::to_wstring(count)).c_str(), nullptr);
             return all;
         }},
        {L"\\DISK",
         [] {
             panel::Panel(panelDirectory()).plug({{{panelDirectory().string() + "-disk", "Disk"}}});
             return true;
         }},
    };
    for (const auto& each : cases) {
        EXPECT_FALSE(found(each.name)) << std::filesystem::path(each.name);
        EXPECT_TRUE(each.make()) << GetLastError() << std::filesystem::path(each.name);
        EXPECT_TRUE(found(each.name)) << std::filesystem::path(each.name);
    }
    std::filesystem::remove(panelDirectory().string() + "-disk");
    // What a person adds: by its exact name at once, by another one a little later.
    EXPECT_FALSE(found(L"\\MMCMemory\\folder\\BY HAND"));
    writeFile("\\MMCMemory\\Folder\\By Hand", "");
    EXPECT_TRUE(found(L"\\MMCMemory\\folder\\By Hand"));
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!found(L"\\MMCMemory\\folder\\BY HAND"))
        ASSERT_LT(std::chrono::steady_clock::now(), end);
}

TEST(Paths, RefuseWhatThePlatformDoesNotKnow) {
    writeFile("\\MMCMemory\\a\\b.txt", "x");
    const struct {
        const wchar_t* path;
        DWORD error;
    } cases[] = {
        {L"", ERROR_PATH_NOT_FOUND},
        {L"\\MMCMemory\\none", ERROR_FILE_NOT_FOUND},
        {L"\\MMCMemory\\none\\b.txt", ERROR_PATH_NOT_FOUND},
        {L"\\MMCMemory\\a\\.", ERROR_INVALID_NAME},
        {L"C:\\MMCMemory", ERROR_PATH_NOT_FOUND},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(GetFileAttributesW(each.path), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(GetLastError(), each.error) << std::filesystem::path(each.path);
    }
    EXPECT_EQ(GetFileAttributesW((L"\\" + std::wstring(MAX_PATH, L'x')).c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_FILENAME_EXCED_RANGE);
}

TEST(Files, SharingIsWhatBothOpeningsGrant) {
    writeFile("\\MMCMemory\\f", "x");
    constexpr DWORD both = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const struct {
        DWORD access, share, secondAccess, secondShare;
        bool works;
    } cases[] = {
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, both, false},
        {GENERIC_WRITE, both, GENERIC_READ, FILE_SHARE_READ, false},
        {GENERIC_WRITE, both, GENERIC_READ, both, true},
        {GENERIC_READ, 0, GENERIC_READ, both, false},
    };
    for (const auto& each : cases) {
        const HANDLE first = openFile(L"\\MMCMemory\\f", each.access, each.share, OPEN_EXISTING);
        ASSERT_NE(first, INVALID_HANDLE_VALUE);
        const HANDLE second = openFile(L"\\MMCMemory\\F", each.secondAccess, each.secondShare, OPEN_EXISTING);
        EXPECT_EQ(second != INVALID_HANDLE_VALUE, each.works);
        if (!each.works) {
            EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        }
        CloseHandle(second);
        EXPECT_TRUE(CloseHandle(first));
    }
}

TEST(Files, DispositionsDecideAboutWhatIsThere) {
    const auto makes = [](const wchar_t* path, DWORD disposition) {
        const HANDLE file = openFile(path, GENERIC_READ | GENERIC_WRITE, 0, disposition);
        const DWORD error = GetLastError();
        CloseHandle(file);
        return file == INVALID_HANDLE_VALUE ? error : 0;
    };
    writeFile("\\MMCMemory\\there", "content");
    EXPECT_EQ(makes(L"\\MMCMemory\\there", CREATE_NEW), ERROR_FILE_EXISTS);
    EXPECT_EQ(makes(L"\\MMCMemory\\there", OPEN_ALWAYS), 0U);
    EXPECT_EQ(readFile("\\MMCMemory\\there"), "content");
    EXPECT_EQ(makes(L"\\MMCMemory\\there", CREATE_ALWAYS), 0U);
    EXPECT_EQ(readFile("\\MMCMemory\\there"), "");
    EXPECT_EQ(makes(L"\\MMCMemory\\missing", OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(makes(L"\\MMCMemory\\missing", TRUNCATE_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(makes(L"\\MMCMemory\\missing", CREATE_NEW), 0U);
    EXPECT_TRUE(exists("\\MMCMemory\\missing"));
    EXPECT_EQ(makes(L"\\MMCMemory\\no\\folder", CREATE_ALWAYS), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(makes(L"\\MMCMemory", OPEN_EXISTING), ERROR_ACCESS_DENIED);
}

TEST(Files, InUseOrReadOnlyStayButCanBeRenamed) {
    writeFile("\\MMCMemory\\d\\open", "x");
    writeFile("\\MMCMemory\\d\\locked", "x");
    writeFile("\\MMCMemory\\other", "new");
    const HANDLE file = openFile(L"\\MMCMemory\\d\\open", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_TRUE(SetFileAttributesW(L"\\MMCMemory\\d\\locked", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesW(L"\\MMCMemory\\d\\locked"), FILE_ATTRIBUTE_READONLY);
    for (const wchar_t* path : {L"\\MMCMemory\\d\\open", L"\\MMCMemory\\d\\locked"}) {
        EXPECT_FALSE(DeleteFileW(path));
        EXPECT_FALSE(CopyFileW(L"\\MMCMemory\\other", path, FALSE));
    }
    EXPECT_EQ(openFile(L"\\MMCMemory\\d\\locked", GENERIC_WRITE, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\d\\open", L"\\MMCMemory\\d\\moved"));
    EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\d", L"\\MMCMemory\\e")); // its folder too
    EXPECT_FALSE(DeleteFileW(L"\\MMCMemory\\e\\moved"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(file);
    EXPECT_TRUE(DeleteFileW(L"\\MMCMemory\\e\\moved"));
    EXPECT_TRUE(SetFileAttributesW(L"\\MMCMemory\\e\\locked", FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(DeleteFileW(L"\\MMCMemory\\e\\locked"));
}

TEST(Files, MovesNeverReplaceAndFoldersStayOnTheirVolume) {
    writeFile("\\MMCMemory\\from", "1");
    writeFile("\\MMCMemory\\to", "2");
    writeFile("\\MMCMemory\\folder\\f", "3");
    EXPECT_FALSE(MoveFileW(L"\\MMCMemory\\from", L"\\MMCMemory\\TO"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(MoveFileW(L"\\MMCMemory\\folder", L"\\Windows\\folder"));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SAME_DEVICE);
    EXPECT_FALSE(MoveFileW(L"\\MMCMemory", L"\\Other"));
    EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\from", L"\\Windows\\from"));
    EXPECT_EQ(readFile("\\Windows\\from"), "1");
    EXPECT_FALSE(exists("\\MMCMemory\\from"));
    EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\to", L"\\MMCMemory\\To"));
    EXPECT_EQ(find(L"\\MMCMemory\\*"), (Names{L"folder", L"To"}));
    EXPECT_FALSE(RemoveDirectoryW(L"\\MMCMemory\\folder"));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
    EXPECT_FALSE(RemoveDirectoryW(L"\\MMCMemory"));
    EXPECT_TRUE(DeleteFileW(L"\\MMCMemory\\folder\\f"));
    EXPECT_TRUE(RemoveDirectoryW(L"\\MMCMemory\\folder"));
}

TEST(Searches, MatchPatternsInTheOrderOfNames) {
    for (const char* file : {"b.txt", "A.txt", "_rm_x", "_rm_1_x", "none"})
        writeFile(std::string("\\MMCMemory\\s\\") + file, "");
    CreateDirectoryW(L"\\MMCMemory\\s\\_RM_folder", nullptr);
    EXPECT_EQ(find(L"\\MMCMemory\\s\\*"), (Names{L"_rm_1_x", L"_RM_folder", L"_rm_x", L"A.txt", L"b.txt", L"none"}));
    EXPECT_EQ(find(L"\\MMCMemory\\s\\*.*").size(), 6U);
    EXPECT_EQ(find(L"\\MMCMemory\\s\\_rm*"), (Names{L"_rm_1_x", L"_RM_folder", L"_rm_x"}));
    EXPECT_EQ(find(L"\\MMCMemory\\s\\?.TXT"), (Names{L"A.txt", L"b.txt"}));
    EXPECT_EQ(find(L"\\MMCMemory\\s\\none"), Names{L"none"});
    EXPECT_EQ(find(L"\\MMCMemory\\s\\"), Names{}); // an empty pattern
    EXPECT_EQ(find(L"\\MMCMemory\\missing\\*"), Names{});
    EXPECT_EQ(find(L"\\*"), (Names{L"MMCMemory", L"NANDFlash", L"Windows"})); // no "." and ".."
}

TEST(Files, FailWithACountOfZeroAndTakeAHighPartOfZero) {
    writeFile("\\MMCMemory\\f", "12345");
    const HANDLE file = openFile(L"\\MMCMemory\\f", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    char buffer[4] = {};
    for (const bool faulted : {false, true}) {
        const HANDLE used = faulted ? file : nullptr;
        if (faulted) {
            failCall("ReadFile");
            failCall("WriteFile");
        }
        DWORD count = 7;
        EXPECT_FALSE(ReadFile(used, buffer, sizeof buffer, &count, nullptr));
        EXPECT_EQ(count, 0U);
        count = 7;
        EXPECT_FALSE(WriteFile(used, buffer, sizeof buffer, &count, nullptr));
        EXPECT_EQ(count, 0U);
    }
    LONG high = 0;
    EXPECT_EQ(SetFilePointer(file, 2, &high, FILE_BEGIN), 2U);
    EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_CURRENT), 1U); // 4 GB - 1 more
    EXPECT_EQ(high, 1);
    EXPECT_EQ(SetFilePointer(file, 2, &high, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_END), 4U);
    CloseHandle(file);
}

TEST(Streams, AppendSeekAndFail) {
    writeFile("\\MMCMemory\\log", "12345");
    std::FILE* first = _wfopen(L"\\MMCMemory\\log", L"a");
    std::FILE* second = _wfopen(L"\\MMCMemory\\log", L"ab");
    std::fputs("a", first);
    EXPECT_EQ(readFile("\\MMCMemory\\log"), "12345"); // it is still in the program's buffer
    std::fflush(first);
    std::fputs("b", second);
    std::fflush(second);
    std::fputs("c", first);
    std::fclose(first);
    std::fclose(second);
    EXPECT_EQ(readFile("\\MMCMemory\\log"), "12345abc");
    std::FILE* reader = _wfopen(L"\\MMCMemory\\log", L"rb");
    EXPECT_EQ(std::fseek(reader, 0, SEEK_END), 0);
    EXPECT_EQ(std::ftell(reader), 8);
    std::fclose(reader);
    EXPECT_EQ(_wfopen(L"\\MMCMemory\\none", L"r"), nullptr);
    EXPECT_EQ(_wfopen(L"\\MMCMemory", L"w"), nullptr);
    failCall("WriteFile");
    std::FILE* failing = _wfopen(L"\\MMCMemory\\full", L"w");
    std::fputs("lost", failing);
    EXPECT_NE(std::fclose(failing), 0);
    EXPECT_EQ(readFile("\\MMCMemory\\full"), "");
}

TEST(Shortcuts, AreTextWithACountAndNeverReplaced) {
    std::wstring path = L"\\Windows\\T.lnk";
    std::wstring command = L"\"\\MMCMemory\\Tarvex.exe\" -x";
    EXPECT_TRUE(SHCreateShortcut(path.data(), command.data()));
    EXPECT_EQ(readFile("\\Windows\\T.lnk"), "26#\"\\MMCMemory\\Tarvex.exe\" -x");
    EXPECT_FALSE(SHCreateShortcut(path.data(), command.data()));
    path = L"\\Windows\\L.lnk";
    command.assign(256, L'x'); // with its zero one too many
    EXPECT_FALSE(SHCreateShortcut(path.data(), command.data()));
    command.pop_back();
    EXPECT_TRUE(SHCreateShortcut(path.data(), command.data()));
}

namespace {

int format(wchar_t* buffer, std::size_t count, const wchar_t* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    const int length = _vsnwprintf(buffer, count, text, arguments);
    va_end(arguments);
    return length;
}

} // namespace

TEST(WideText, FormattedCutComparedAndRead) {
    wchar_t buffer[32] = {};
    EXPECT_EQ(format(buffer, 32, L"%s|%5d|%-3u|%04x|%%|%c", L"wide \u20AC", -7, 8U, 255U, L'z'), 25);
    EXPECT_STREQ(buffer, L"wide \u20AC|   -7|8  |00ff|%|z");
    buffer[4] = L'!';
    EXPECT_EQ(format(buffer, 4, L"12345"), -1); // cut, and not terminated
    EXPECT_EQ(std::wstring(buffer, 5), L"1234!");
    EXPECT_EQ(format(buffer, 4, L"1234"), 4);
    EXPECT_EQ(_wcsicmp(L"\\A\u00C4b", L"\\a\u00E4B"), 0);
    EXPECT_LT(_wcsicmp(L"a", L"B"), 0);
    EXPECT_GT(_wcsicmp(L"ab", L"A"), 0);
    EXPECT_EQ(_wtol(L"  -15.8"), -15);
    EXPECT_EQ(_wtol(L"x1"), 0);
}
