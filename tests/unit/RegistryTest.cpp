#include "OrvaUtils/Registry/Registry.h"

#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/KeyEnumerator.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/ValueEnumerator.h"
#include "OrvaUtils/Registry/Writing.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace OrvaUtils::Registry;
using namespace testing_panel;

namespace {

using Names = std::vector<std::wstring>;

void make(const std::wstring& path) {
    const Key made(createKey(HKEY_LOCAL_MACHINE, path, 0));
}

const auto failureOf = messageOf<RegistryException>;

template<class Enumerator>
Names namesIn(HKEY key) {
    Names found;
    for (Enumerator names(key); names.isValid();) {
        found.push_back(*names);
    }
    return found;
}

std::size_t openKeys() {
    std::size_t open = 0;
    for (const std::string& line : trace()) {
        const bool succeeded = line.find(" = 0") != std::string::npos;
        open += succeeded && (line.starts_with("RegOpenKeyExW") || line.starts_with("RegCreateKeyExW"));
        open -= line.starts_with("RegCloseKey");
    }
    return open;
}

} // namespace

TEST(Registry, TellsWhatExists) {
    {
        const Key key(createKey(HKEY_LOCAL_MACHINE, L"A\\B", 0));
        writeString(key.handle(), L"Value", L"");
        writeString(key.handle(), L"", L"default");
    }
    startTrace();
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"a\\B"));
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, L"A\\C"));
    EXPECT_FALSE(keyExists(HKEY_CLASSES_ROOT, L"A\\B"));
    EXPECT_TRUE(valueExists(HKEY_LOCAL_MACHINE, L"A\\B", L"VALUE"));
    EXPECT_TRUE(valueExists(HKEY_LOCAL_MACHINE, L"A\\B", L""));
    EXPECT_FALSE(valueExists(HKEY_LOCAL_MACHINE, L"A", L""));
    EXPECT_FALSE(valueExists(HKEY_LOCAL_MACHINE, L"A\\C", L"Value"));
    EXPECT_FALSE(valueExists(HKEY_LOCAL_MACHINE, L"", L"Value"));
    {
        const Key key(HKEY_LOCAL_MACHINE, L"A\\B");
        EXPECT_TRUE(valueExists(key.handle(), L"", L"Value")) << "the key itself";
        const std::size_t opened = trace({"RegOpenKeyExW"}).size();
        EXPECT_FALSE(valueExists(key.handle(), L"", L"Other"));
        EXPECT_EQ(trace({"RegOpenKeyExW"}).size(), opened);
    }
    EXPECT_EQ(openKeys(), 0U);
}

TEST(Registry, OpensMakesAndDeletes) {
    startTrace();
    EXPECT_EQ(failureOf([] { const Key key(HKEY_LOCAL_MACHINE, L"A\\B"); }), L"Cannot open subkey 'A\\B'");
    make(L"A\\B\\C");
    make(L"A\\B\\C"); // opens it
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"A\\B\\C"));
    failCall("RegCreateKeyExW");
    EXPECT_EQ(failureOf([] { make(L"A\\X"); }), L"Cannot open subkey");
    {
        const Key key(HKEY_LOCAL_MACHINE, L"A\\B");
        writeDword(key.handle(), L"v", 1);
        deleteValue(key.handle(), L"V");
        EXPECT_EQ(failureOf([&] { deleteValue(key.handle(), L"v"); }), L"Deleting non existing value");
        EXPECT_EQ(failureOf([] { deleteKey(HKEY_LOCAL_MACHINE, L"A"); }), L"Deleting non existing key")
            << "one below it is open";
    }
    deleteKey(HKEY_LOCAL_MACHINE, L"A\\B");
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, L"A\\B"));
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"A"));
    EXPECT_EQ(failureOf([] { deleteKey(HKEY_LOCAL_MACHINE, L"A\\B"); }), L"Deleting non existing key");
    EXPECT_EQ(openKeys(), 0U);
}

TEST(Registry, EnumeratesByNumberWhileNamesGo) {
    make(L"A\\one");
    make(L"A\\Two");
    make(L"A\\three");
    const Key key(HKEY_LOCAL_MACHINE, L"A");
    for (const wchar_t* name : {L"", L"x", L"Y"}) {
        writeDword(key.handle(), name, 0);
    }
    Names keys = namesIn<KeyEnumerator>(key.handle());
    Names values = namesIn<ValueEnumerator>(key.handle());
    EXPECT_EQ(std::set(keys.begin(), keys.end()), (std::set<std::wstring>{L"one", L"Two", L"three"}));
    EXPECT_EQ(std::set(values.begin(), values.end()), (std::set<std::wstring>{L"", L"x", L"Y"}));

    KeyEnumerator names(key.handle());
    deleteKey(key.handle(), *names); // which has taken the second name already
    EXPECT_EQ(*names, keys.at(1));
    EXPECT_FALSE(names.isValid()) << "what was third is second now";

    deleteKey(HKEY_LOCAL_MACHINE, L"A\\" + keys.at(1));
    const std::wstring longest(255, L'k');
    make(L"A\\" + longest);
    keys = namesIn<KeyEnumerator>(key.handle());
    EXPECT_NE(std::find(keys.begin(), keys.end(), longest), keys.end());
    failCall("RegEnumKeyExW");
    EXPECT_EQ(namesIn<KeyEnumerator>(key.handle()), Names{});
}

TEST(Registry, DeletesATreeByNumbersAndLeavesNothing) {
    for (const wchar_t* path : {L"T\\1", L"T\\2\\x", L"T\\3\\y\\z", L"T\\4"}) {
        make(path);
    }
    make(L"Other");
    startTrace();
    deleteKeyTree(HKEY_LOCAL_MACHINE, L"T");
    EXPECT_EQ(openKeys(), 0U);
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, L"T"));
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"Other"));
    // Each name is known before the one ahead of it goes: 2 before 1 goes. Then 4 has the next number, and 3 is
    // skipped.
    Lines deleted;
    for (const std::string& line : trace({"RegDeleteKeyW"})) {
        deleted.push_back(line.substr(line.find('"'), line.rfind('"') + 1 - line.find('"')));
    }
    EXPECT_EQ(deleted, (Lines{"\"1\"", "\"x\"", "\"2\"", "\"4\"", "\"T\""}));
}

TEST(Registry, StopsDeletingATreeAtAKeyThatIsOpen) {
    make(L"T\\1");
    make(L"T\\2");
    startTrace();
    {
        const Key busy(HKEY_LOCAL_MACHINE, L"T\\2");
        EXPECT_EQ(failureOf([] { deleteKeyTree(HKEY_LOCAL_MACHINE, L"T"); }), L"Deleting non existing key");
    }
    EXPECT_EQ(openKeys(), 0U);
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"T\\2"));
    EXPECT_EQ(failureOf([] { deleteKeyTree(HKEY_LOCAL_MACHINE, L"U"); }), L"Cannot open subkey 'U'");
}

TEST(Registry, FlushesTheRootsInOrder) {
    startTrace();
    failCall("RegFlushKey", 1);
    flushKey(HKEY_CLASSES_ROOT); // whose failure is ignored
    EXPECT_EQ(flushAll(), 0);
    const Lines calls = trace({"RegFlushKey"});
    ASSERT_EQ(calls.size(), 5U);
    const char* const order[] = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE", "HKEY_USERS"};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(calls[i + 1].starts_with(std::string("RegFlushKey(") + order[i] + ")")) << calls[i + 1];
    }
    failCall("RegFlushKey", 4);
    EXPECT_NE(flushAll(), 0);
    failCall("RegFlushKey", 1);
    EXPECT_EQ(flushAll(), 0) << "only the last one's answer";
}

TEST(Registry, DeletesItsStoreAndWhatIsLeftOfIt) {
    writeFile("\\RegPart\\Windows\\system.hv", "");
    writeFile("\\RegPart\\Windows\\busy.hv", "");
    writeFile("\\RegPart\\user", "");
    const HANDLE busy =
        CreateFileW(L"\\RegPart\\Windows\\busy.hv", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    deleteRegistryStore();
    EXPECT_EQ(list("\\RegPart"), (Lines{"_rm_Windows", "user"}));
    EXPECT_EQ(list("\\RegPart\\_rm_Windows"), Lines{"_rm_busy.hv"});
    CloseHandle(busy);
    cleanupRegistryStore();
    EXPECT_EQ(list("\\RegPart"), Lines{"user"});
}
