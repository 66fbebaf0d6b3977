// What a power cut leaves of files.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Lock.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <csignal>
#include <sched.h>
#include <sys/resource.h>

namespace fs = std::filesystem;

using panel::StoragePolicy;

namespace {

// Writes to the end of a file through a handle of this process, and leaves the handle open.
HANDLE append(const wchar_t* path, const std::string& text, DWORD disposition = OPEN_ALWAYS) {
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    SetFilePointer(file, 0, nullptr, FILE_END);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    return file;
}

} // namespace

TEST(Storage, ACutLeavesOfFilesWhatTheStoragePolicySays) {
    const std::string old(10, 'o');
    const std::string added(1000, 'n');
    const std::string all = old + added;
    const std::string first(10, '1');
    const struct {
        StoragePolicy policy;
        std::optional<std::uint32_t> sectors; // empty: the panel is switched off
        std::string moved, emptied, shared;
    } rows[] = {
        {StoragePolicy::kept, 0, all, added, first + old + first},
        {StoragePolicy::closed, {}, all, added, first + old + first},
        {StoragePolicy::closed, 0, old, "", first + std::string(10, 0) + first},
        {StoragePolicy::torn, 0, old, "", first + std::string(10, 0) + first},
        {StoragePolicy::torn, 1, all.substr(0, 512), added.substr(0, 512), first + old + first},
        {StoragePolicy::torn, 2, all, added, first + old + first},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.policy) << ' ' << row.sectors.value_or(99));
        ScenarioPanel panel;
        panel.panel().setStorage(row.policy);
        panel.plugDisk("Hard Disk");
        for (const char* file : {"\\MMCMemory\\From\\moved", "\\MMCMemory\\emptied", "\\Hard Disk\\file"})
            panel.write(file, old);
        append(L"\\MMCMemory\\from\\MOVED", added);
        EXPECT_TRUE(MoveFileW(L"\\MMCMemory\\From", L"\\MMCMemory\\To"));
        append(L"\\MMCMemory\\emptied", "gone");
        append(L"\\MMCMemory\\emptied", added, CREATE_ALWAYS);
        append(L"\\Hard Disk\\file", added);
        CloseHandle(append(L"\\Windows\\closed", added));
        const HANDLE one = append(L"\\MMCMemory\\shared", first);
        append(L"\\MMCMemory\\shared", old);
        SetFilePointer(one, 0, nullptr, FILE_END);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(one, first.data(), 10, &written, nullptr));
        CloseHandle(one);
        const FreshFolder other;
        fs::copy(panel.panel().directory(), other.path / "copy", fs::copy_options::recursive);
        if (row.sectors)
            panel.panel().cut(*row.sectors);
        else
            panel.panel().off();
        EXPECT_EQ(panel.read("\\MMCMemory\\To\\moved"), row.moved);
        EXPECT_EQ(panel.read("\\MMCMemory\\emptied"), row.emptied);
        EXPECT_EQ(panel.read("\\MMCMemory\\shared"), row.shared);
        EXPECT_EQ(panel.read("\\Windows\\closed"), added);
        EXPECT_EQ(panel.read("\\Hard Disk\\file"), all);
        EXPECT_FALSE(panel.exists("\\MMCMemory\\From"));
        panel::Panel copy(other.path / "copy");
        copy.boot({});
        copy.off();
        const bool keeps = row.policy == StoragePolicy::kept;
        EXPECT_EQ(fs::file_size(copy.hostPath("\\MMCMemory\\To\\moved")), keeps ? all.size() : old.size());
    }
}

TEST(Storage, ACutLeavesWhatAPersonHasDoneToAFile) {
    ScenarioPanel panel;
    panel.panel().setStorage(StoragePolicy::closed);
    panel.plugDisk("Hard Disk");
    std::vector<HANDLE> handles{append(L"\\Hard Disk\\file", "lost")};
    for (const wchar_t* file : {L"\\MMCMemory\\replaced", L"\\MMCMemory\\deleted", L"\\MMCMemory\\changed"}) {
        CloseHandle(append(file, "old"));
        handles.push_back(append(file, "lost"));
    }
    append(L"\\MMCMemory\\untouched", "lost");
    const FreshFolder other;
    fs::copy(panel.panel().directory(), other.path / "copy", fs::copy_options::recursive);
    panel.write("\\MMCMemory\\new", "new");
    fs::rename(panel.panel().hostPath("\\MMCMemory\\new"), panel.panel().hostPath("\\MMCMemory\\replaced"));
    fs::remove(panel.panel().hostPath("\\MMCMemory\\deleted"));
    panel.write("\\MMCMemory\\changed", "changed");
    panel.panel().disks().unplug("Hard Disk");
    DWORD written = 0;
    for (const HANDLE file : handles)
        EXPECT_TRUE(WriteFile(file, "lost", 4, &written, nullptr));
    panel.panel().cut();
    EXPECT_EQ(panel.read("\\MMCMemory\\replaced"), "new");
    EXPECT_EQ(panel.read("\\MMCMemory\\changed"), "changed");
    EXPECT_EQ(panel.read("\\MMCMemory\\untouched"), "");
    EXPECT_FALSE(panel.exists("\\MMCMemory\\deleted"));
    panel::Panel copy(other.path / "copy");
    copy.setStorage(StoragePolicy::closed); // keeps what was written before
    copy.boot({});
    EXPECT_EQ(readText(copy.hostPath("\\MMCMemory\\untouched")), "lost");
    copy.off();
}

TEST(Storage, AWriteFailsIfTheHostCannotRecordIt) {
    ScenarioPanel panel;
    panel.panel().setStorage(StoragePolicy::closed);
    const HANDLE first = append(L"\\MMCMemory\\file", "first");
    const HANDLE second = append(L"\\MMCMemory\\file", "second");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{100,
                 RLIM_INFINITY}; // bytes of a file: the file has room for a write, the record of all writes has none
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    DWORD written = 0;
    int writes = 0;
    while (SetFilePointer(second, 0, nullptr, FILE_BEGIN) == 0 && WriteFile(second, "again", 5, &written, nullptr) &&
           writes < 100)
        ++writes;
    EXPECT_EQ(GetLastError(), DWORD{ERROR_DISK_FULL});
    EXPECT_LT(writes, 100);
    limit.rlim_cur = RLIM_INFINITY;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    CloseHandle(first);
    CloseHandle(second);
    EXPECT_TRUE(fs::is_empty(panel.panel().directory() / "run/uncommitted"));
}

TEST(Storage, NoCallHasAnEffectAfterACut) {
    const char* file = "\\MMCMemory\\file";
    ScenarioPanel panel(0, 1);
    panel.put("\\MMCMemory\\Actor.exe", programFile("Actor"));
    panel.driver().start("\\MMCMemory\\Actor.exe", std::string("fill ") + file);
    EXPECT_TRUE(panel.driver().waitUntil([&] { return panel.exists(file); }, ScenarioPanel::limit));
    panel::Image& image = panel::Runtime::instance().image();
    {
        const panel::Lock lock(image);
        while (!(image.lock.load() >> 31)) // until the program is inside a call, and waits for the lock
            sched_yield();
        image.on = 0;
        panel.write(file, "cut");
    }
    for (int turn = 0; turn < 1000; ++turn, sched_yield())
        const panel::Lock lock(image);
    EXPECT_EQ(panel.read(file), "cut");
}
