#include "OrvaUtils/Registry/Registry.h"

#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/KeyEnumerator.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/ValueEnumerator.h"
#include "OrvaUtils/Registry/Writing.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

using namespace OrvaUtils::Registry;
using namespace testing_panel;

namespace {

using Names = std::vector<std::wstring>;

void make(const std::wstring& path) {
    const Key made(createKey(HKEY_LOCAL_MACHINE, path, 0));
}

const auto keyFailure = messageOf<RegistryException>;

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
    EXPECT_EQ(keyFailure([] { const Key key(HKEY_LOCAL_MACHINE, L"A\\B"); }), L"Cannot open subkey 'A\\B'");
    make(L"A\\B\\C");
    make(L"A\\B\\C"); // opens it
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"A\\B\\C"));
    failCall("RegCreateKeyExW");
    EXPECT_EQ(keyFailure([] { make(L"A\\X"); }), L"Cannot open subkey");
    {
        const Key key(HKEY_LOCAL_MACHINE, L"A\\B");
        writeDword(key.handle(), L"v", 1);
        deleteValue(key.handle(), L"V");
        EXPECT_EQ(keyFailure([&] { deleteValue(key.handle(), L"v"); }), L"Deleting non existing value");
        EXPECT_EQ(keyFailure([] { deleteKey(HKEY_LOCAL_MACHINE, L"A"); }), L"Deleting non existing key")
            << "one below it is open";
    }
    deleteKey(HKEY_LOCAL_MACHINE, L"A\\B");
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, L"A\\B"));
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"A"));
    EXPECT_EQ(keyFailure([] { deleteKey(HKEY_LOCAL_MACHINE, L"A\\B"); }), L"Deleting non existing key");
    EXPECT_EQ(openKeys(), 0U);
}

TEST(Registry, EnumeratesByNumberWhileNamesGo) {
    const std::wstring longest(255, L'k');
    for (const wchar_t* path : {L"A\\one", L"A\\Two", L"A\\three"}) {
        make(path);
    }
    make(L"B\\" + longest);
    const Key key(HKEY_LOCAL_MACHINE, L"B");
    writeDword(key.handle(), L"x", 0);
    writeDword(key.handle(), L"Y", 0);
    EXPECT_EQ(namesIn<KeyEnumerator>(key.handle()), Names{longest});
    EXPECT_EQ(namesIn<ValueEnumerator>(key.handle()), (Names{L"x", L"Y"}));
    const Key three(HKEY_LOCAL_MACHINE, L"A");
    KeyEnumerator names(three.handle());
    deleteKey(three.handle(), *names); // which has taken the second name already
    EXPECT_TRUE(keyExists(three.handle(), *names));
    EXPECT_FALSE(names.isValid()) << "what was third is second now";
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

TEST(Registry, FlushesTheRootsInOrder) {
    startTrace();
    failCall("RegFlushKey", 1);
    EXPECT_EQ(flushAll(), 0) << "only the last one's answer";
    Lines flushed = trace({"RegFlushKey"});
    failCall("RegFlushKey", 4);
    EXPECT_NE(flushAll(), 0);
    for (std::string& call : flushed) {
        call.resize(call.find(')'));
    }
    EXPECT_EQ(flushed, (Lines{"RegFlushKey(HKEY_CLASSES_ROOT", "RegFlushKey(HKEY_CURRENT_USER",
                              "RegFlushKey(HKEY_LOCAL_MACHINE", "RegFlushKey(HKEY_USERS"}));
}

TEST(Registry, DeletesItsStoreAndWhatIsLeftOfIt) {
    writeFile("\\RegPart\\Windows\\system.hv", "");
    writeFile("\\RegPart\\_rm_Windows\\busy.hv", "");
    writeFile("\\RegPart\\user", "");
    deleteRegistryStore();
    EXPECT_EQ(list("\\RegPart"), (Lines{"_rm_Windows", "user"}));
    cleanupRegistryStore();
    EXPECT_EQ(list("\\RegPart"), Lines{"user"});
}
