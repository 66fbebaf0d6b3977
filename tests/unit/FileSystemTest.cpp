#include "OrvaUtils/IO/FileSystemException.h"
#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Text.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <map>

using namespace OrvaUtils::IO;
using namespace testing_panel;

namespace {

using Lines = std::vector<std::string>;

// A file that is in use.
class HeldOpen {
public:
    explicit HeldOpen(const wchar_t* path)
        : file(CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(file, INVALID_HANDLE_VALUE);
    }
    ~HeldOpen() {
        CloseHandle(file);
    }

private:
    HANDLE file;
};

const auto fileFailure = messageOf<FileSystemException>;

} // namespace

TEST(FileSystem, DoesPathArithmetic) {
    IFileSystem& files = getFileSystem();
    EXPECT_EQ(files.getSeparator(), L'\\');
    const struct {
        const wchar_t* path;
        const wchar_t* normal;
        const wchar_t* directory;
        const wchar_t* name;
    } paths[] = {
        {L"\\\\A\\\\\\B\\\\", L"\\A\\B", L"\\\\A\\\\\\B\\", L""},
        {L"\\A\\b.txt", L"\\A\\b.txt", L"\\A", L"b"},
        {L"\\A\\b.TXT", L"\\A\\b.TXT", L"\\A", L"b.TXT"},
        {L"\\A\\.txt", L"\\A\\.txt", L"\\A", L""},
        {L"\\A\\txt", L"\\A\\txt", L"\\A", L"txt"},
        {L"b.txt", L"b.txt", L"", L"b"},
        {L"\\b", L"\\b", L"", L"b"},
        {L"\\\\", L"", L"\\", L""},
        {L"", L"", L"", L""},
    };
    for (const auto& [path, normal, directory, name] : paths) {
        EXPECT_EQ(files.normalizePath(path), normal) << OrvaUtils::toUtf8(path);
        EXPECT_EQ(files.getDirectoryPart(path), directory) << OrvaUtils::toUtf8(path);
        EXPECT_EQ(files.getFileName(path, L".txt"), name) << OrvaUtils::toUtf8(path);
    }
    EXPECT_EQ(files.getFileName(L"\\A\\b.txt", L""), L"b.txt");
    EXPECT_EQ(files.getFileName(L"\\A\\b.txt", L"A\\b.txt"), L"b.txt");
    EXPECT_EQ(files.toNativeSeparators(L"/A/b\\c"), L"\\A\\b\\c");
    const struct {
        const wchar_t* first;
        const wchar_t* second;
        const wchar_t* combined;
    } pairs[] = {
        {L"\\A", L"\\\\B", L"\\A\\B"},
        {L"\\A\\", L"B", L"\\A\\B"},
        {L"", L"B", L"B"},
        {L"", L"\\B", L"B"},
        {L"\\A", L"", L"\\A\\"},
        {L"\\A", L"\\", L"\\A\\"},
        {L"A\\\\", L"B\\", L"A\\\\B\\"},
    };
    for (const auto& [first, second, combined] : pairs) {
        EXPECT_EQ(files.combinePath(first, second), combined);
    }
    const struct {
        const wchar_t* parent;
        const wchar_t* path;
        bool isSub;
    } subPaths[] = {
        {L"\\a\\b", L"\\A\\B\\C", true}, {L"\\A\\B", L"\\A\\BC", true},        {L"", L"\\A", true},
        {L"\\A\\B", L"\\A", false},      {L"\\A\\B\\\\", L"\\\\A\\b\\", true}, {L"\\A\\B", L"\\A\\C\\B", false},
    };
    for (const auto& [parent, path, isSub] : subPaths) {
        EXPECT_EQ(files.isSubPath(parent, path), isSub) << OrvaUtils::toUtf8(parent) << " " << OrvaUtils::toUtf8(path);
    }
}

TEST(FileSystem, CreatesMissingDirectories) {
    IFileSystem& files = getFileSystem();
    EXPECT_FALSE(files.createDirectory(L"\\D\\a"));
    EXPECT_TRUE(files.createDirectories(L"\\D\\a\\b"));
    EXPECT_TRUE(files.isDirectory(L"\\D\\a\\b"));
    EXPECT_FALSE(files.isFile(L"\\D\\a\\b"));
    EXPECT_FALSE(files.createDirectories(L"\\D\\a\\b")) << "nothing to create";
}

TEST(FileSystem, DeletesReadOnlyFilesButNoDirectories) {
    IFileSystem& files = getFileSystem();
    writeFile("\\D\\locked", "");
    ASSERT_TRUE(SetFileAttributesW(L"\\D\\locked", FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(files.deleteFile(L"\\D\\locked"));
    EXPECT_FALSE(exists("\\D\\locked"));
    EXPECT_FALSE(files.deleteFile(L"\\D\\locked"));
    EXPECT_FALSE(files.deleteFile(L"\\D"));
    EXPECT_TRUE(files.removeDirectory(L"\\D"));
    startTrace();
    EXPECT_FALSE(files.deleteFile(L"\\missing"));
    EXPECT_EQ(trace({"SetFileAttributesW"}), (Lines{R"(SetFileAttributesW("\missing", 0xfffffffe) = 0 error 2)"}))
        << "all bits but the read-only one";
}

TEST(FileSystem, RenamesBusyFilesAway) {
    IFileSystem& files = getFileSystem();
    for (const char* path : {"\\D\\free", "\\D\\busy", "\\D\\_rm_busy", "\\D\\_rm_2_busy\\folder"}) {
        writeFile(path, path);
    }
    std::wstring newName = L"unchanged";
    EXPECT_TRUE(files.deleteOrRenameFile(L"\\D\\free", newName));
    EXPECT_EQ(newName, L"unchanged");
    {
        const HeldOpen busy(L"\\D\\busy");
        EXPECT_TRUE(files.deleteOrRenameFile(L"\\D\\busy", newName));
        EXPECT_EQ(newName, L"\\D\\_rm_1_busy");
        EXPECT_TRUE(files.deleteOrRenameFile(L"\\D\\_rm_1_busy")) << "once is enough";
    }
    writeFile("\\D\\busy", "");
    {
        const HeldOpen busy(L"\\D\\busy");
        EXPECT_TRUE(files.deleteOrRenameFile(L"\\D\\busy", newName));
        EXPECT_EQ(newName, L"\\D\\_rm_3_busy");
    }
    EXPECT_EQ(list("\\D"), (Lines{"_rm_1_busy", "_rm_2_busy", "_rm_3_busy", "_rm_busy"}));
    EXPECT_EQ(readFile("\\D\\_rm_1_busy"), "\\D\\busy");
    EXPECT_TRUE(files.deleteOrRenameFile(L"\\D\\missing", newName)) << "counts as done, always";
}

TEST(FileSystem, DeletesTreesAndLaterTheirLeftovers) {
    IFileSystem& files = getFileSystem();
    for (const char* path : {"\\D\\T\\a", "\\D\\T\\sub\\b", "\\D\\T\\sub\\busy", "\\D\\T\\sub\\deep\\c", "\\D\\U\\d",
                             "\\D\\_rm_file", "\\D\\_rmfile", "\\D\\file_rm_"}) {
        writeFile(path, path);
    }
    std::wstring newName;
    {
        const HeldOpen busy(L"\\D\\T\\sub\\busy");
        EXPECT_TRUE(files.deleteDirectoryOrRename(L"\\D\\T", newName));
        EXPECT_EQ(newName, L"\\D\\_rm_T");
        EXPECT_EQ(list("\\D\\_rm_T"), Lines{"_rm_sub"});
        EXPECT_EQ(list("\\D\\_rm_T\\_rm_sub"), Lines{"_rm_busy"});
        files.deleteDirectoryOrRename(L"\\D\\U", newName);
        EXPECT_EQ(newName, L"\\D\\U");
        files.cleanupDirectory(L"\\D");
        EXPECT_EQ(list("\\D"), (Lines{"_rm_T", "_rmfile", "file_rm_"})) << "what is still busy keeps its name";
    }
    files.cleanupDirectory(L"\\D");
    EXPECT_EQ(list("\\D"), (Lines{"_rmfile", "file_rm_"}));
    files.cleanupDirectory(L"\\missing");
    files.deleteDirectoryContents(L"\\D", L"*file*", L"_rm*");
    EXPECT_EQ(list("\\D"), Lines{"_rmfile"});
}

TEST(FileSystem, RefusesEmptyNamesOfTrees) {
    IFileSystem& files = getFileSystem();
    EXPECT_EQ(fileFailure([&] { files.copyDirectory(L"", L"", true, L"*"); }), L"Invalid source directory");
    EXPECT_EQ(fileFailure([&] { files.copyDirectory(L"", L"\\D", true, L"*"); }), L"Invalid destination directory");
    EXPECT_EQ(fileFailure([&] { files.deleteDirectoryOrRename(L""); }), L"Invalid directory name");
    EXPECT_EQ(fileFailure([&] { files.deleteDirectoryContents(L"", L"*", L""); }), L"Invalid directory name");
    EXPECT_EQ(fileFailure([&] { files.cleanupDirectory(L""); }), L"Invalid directory name");
}

TEST(FileSystem, CopiesTrees) {
    IFileSystem& files = getFileSystem();
    for (const char* path : {"\\S\\a", "\\S\\b", "\\S\\sub\\c", "\\S\\sub\\deep\\d"}) {
        writeFile(path, path);
    }
    writeFile("\\D\\a", "kept");
    files.copyDirectory(L"\\D", L"\\S", false, L"*");
    EXPECT_EQ(readFile("\\D\\a"), "kept");
    EXPECT_EQ(readFile("\\D\\b"), "\\S\\b");
    EXPECT_EQ(readFile("\\D\\sub\\deep\\d"), "\\S\\sub\\deep\\d");

    ASSERT_TRUE(SetFileAttributesW(L"\\D\\a", FILE_ATTRIBUTE_READONLY));
    const HeldOpen busy(L"\\D\\b");
    failCall("CopyFileW", 3); // of a, b, sub\c and sub\deep\d in the platform's order
    files.copyDirectory(L"\\D", L"\\S", true, L"*");
    EXPECT_TRUE(exists("\\D\\_rm_b")) << "made way";
    unsigned copied = 0;
    for (const char* path : {"\\a", "\\b", "\\sub\\c", "\\sub\\deep\\d"}) {
        const std::string destination = std::string("\\D") + path;
        copied += exists(destination) && readFile(destination) == std::string("\\S") + path;
    }
    EXPECT_EQ(copied, 3U) << "one that fails stays missing and stops no other";

    files.copyDirectory(L"\\P", L"\\S", false, L"?");
    EXPECT_EQ(list("\\P"), (Lines{"a", "b"})) << "as the pattern says";
    files.copyDirectory(L"\\missing\\D", L"\\S", true, L"*");
    EXPECT_FALSE(exists("\\missing"));
    startTrace();
    files.copyDirectory(L"\\E", L"\\missing", true, L"*");
    EXPECT_EQ(trace({"FindFirstFileW", "CreateDirectoryW"}),
              (Lines{R"(FindFirstFileW("\missing\*") = -1 error 2)", R"(CreateDirectoryW("\E") = 1)"}));
    EXPECT_TRUE(exists("\\E"));
}

TEST(FileSystem, CopiesAndMovesOverWhatIsThere) {
    IFileSystem& files = getFileSystem();
    const auto content = [](const char* path) { return exists(path) ? readFile(path) : "missing"; };
    writeFile("\\D\\new", "new");
    writeFile("\\D\\old", "old");
    EXPECT_FALSE(files.copyFile(L"\\D\\new", L"\\D\\old", false));
    EXPECT_FALSE(files.copyFileReplacing(L"\\D\\new", L"\\D\\old", false));
    EXPECT_FALSE(files.moveFile(L"\\D\\new", L"\\D\\old"));
    EXPECT_EQ(content("\\D\\old"), "old");
    EXPECT_TRUE(files.copyFileReplacing(L"\\D\\new", L"\\D\\copy", false));
    EXPECT_EQ(content("\\D\\copy"), "new");
    {
        const HeldOpen busy(L"\\D\\old");
        EXPECT_FALSE(files.copyFile(L"\\D\\new", L"\\D\\old", true));
        EXPECT_TRUE(files.copyFileReplacing(L"\\D\\new", L"\\D\\old", true));
        EXPECT_EQ(content("\\D\\old"), "new");
        EXPECT_EQ(content("\\D\\_rm_old"), "old");
    }
    writeFile("\\D\\newer", "newer");
    {
        const HeldOpen busy(L"\\D\\copy");
        EXPECT_TRUE(files.moveFileReplacing(L"\\D\\newer", L"\\D\\copy"));
        EXPECT_EQ(content("\\D\\_rm_copy"), "new");
    }
    ASSERT_TRUE(SetFileAttributesW(L"\\D\\old", FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(files.moveFileReplacing(L"\\D\\copy", L"\\D\\old"));
    EXPECT_EQ(content("\\D\\old"), "newer");
    EXPECT_EQ(content("\\D\\copy"), "missing");
    EXPECT_FALSE(files.moveFileReplacing(L"\\D\\newer", L"\\D\\elsewhere"));
    EXPECT_FALSE(files.copyFileReplacing(L"\\D\\newer", L"\\D\\elsewhere", true));
}

TEST(FileSystem, ListsByPattern) {
    IFileSystem& files = getFileSystem();
    writeFile("\\D\\a.txt", "");
    writeFile("\\D\\b\\c", "");
    startTrace();
    std::map<std::wstring, DirectoryEntry::Kind> found;
    for (const auto it = files.createDirectoryIterator(L"\\D", L"*"); !it->atEnd(); it->advance()) {
        found[it->current().name] = it->current().kind;
    }
    EXPECT_EQ(found, (std::map<std::wstring, DirectoryEntry::Kind>{{L"a.txt", DirectoryEntry::Kind::File},
                                                                   {L"b", DirectoryEntry::Kind::Directory}}));
    EXPECT_FALSE(files.createDirectoryIterator(L"\\D", L"a*")->atEnd());
    const Lines calls = trace({"FindFirstFileW", "FindClose"});
    ASSERT_EQ(calls.size(), 4U) << "each search is closed, finished or not";
    EXPECT_TRUE(calls[1].starts_with("FindClose(") && calls[3].starts_with("FindClose("));
    startTrace();
    EXPECT_TRUE(files.createDirectoryIterator(L"\\D", L"")->atEnd());
    EXPECT_EQ(trace(), Lines{}) << "what the platform would answer does not matter";
    EXPECT_TRUE(files.createDirectoryIterator(L"\\D", L"_rm*")->atEnd());
    EXPECT_TRUE(files.createDirectoryIterator(L"\\missing", L"*")->atEnd());
}

TEST(FileSystem, CreatesShortcuts) {
    writeFile("\\D\\unrelated", "");
    for (int round = 0; round < 2; ++round) { // also one that is there
        EXPECT_TRUE(getFileSystem().createShortcut(L"\\D\\app.lnk", L"\\D\\app.exe", L"-x"));
        EXPECT_EQ(readFile("\\D\\app.lnk"), "15#\"\\D\\app.exe\" -x");
    }
}
