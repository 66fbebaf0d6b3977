// What the helper keeps in the registry: its autorun and the file association; and what it reads there of the platform.
#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/Writing.h"
#include "app/Autorun.h"
#include "app/FileAssociation.h"
#include "app/PlatformVersion.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

#include <cwchar>

using namespace OrvaUtils::Registry;
using namespace testing_panel;

namespace {

const auto failureOf = messageOf<RegistryException>;

void write(HKEY root, const wchar_t* path, const wchar_t* name, const wchar_t* text) {
    const Key key(createKey(root, path, 0));
    writeString(key.handle(), name, text);
}

void writeOtherType(HKEY root, const wchar_t* path, const wchar_t* name) {
    const Key key(createKey(root, path, 0));
    writeExpandString(key.handle(), name, L"");
}

void erase(HKEY root, const wchar_t* path, const wchar_t* name) {
    const Key key(root, path);
    deleteValue(key.handle(), name);
}

} // namespace

TEST(Autorun, IsConfiguredByThePathAndTheBarePresenceOfAnOrder) {
    const HKEY root = HKEY_LOCAL_MACHINE;
    deleteKey(root, L"init");
    EXPECT_FALSE(isAutorunConfigured()) << "no list";
    write(root, L"init", L"Launch61", L"\\MMCMemory\\TARVEX\\tarvexhelper.exe");
    EXPECT_FALSE(isAutorunConfigured()) << "no order";
    writeOtherType(root, L"init", L"Depend61");
    EXPECT_TRUE(isAutorunConfigured()) << "any data will do";
    for (const wchar_t* path : {L"\\MMCMemory\\Tarvex\\TarvexHelper", L"\\MMCMemory\\Tarvex\\TarvexHelper.exe2", L""}) {
        write(root, L"init", L"Launch61", path);
        EXPECT_FALSE(isAutorunConfigured());
    }
    configureAutorun();
    EXPECT_TRUE(isAutorunConfigured());
    const Key key(root, L"init");
    EXPECT_EQ(readString(key.handle(), L"Launch61"), L"\\MMCMemory\\Tarvex\\TarvexHelper.exe");
    EXPECT_EQ(readBinary(key.handle(), L"Depend61"), (std::vector<std::uint8_t>{0x32, 0}));
    deleteValue(key.handle(), L"Launch61");
    EXPECT_FALSE(isAutorunConfigured());
    writeOtherType(root, L"init", L"Launch61");
    EXPECT_EQ(failureOf([] { isAutorunConfigured(); }), L"Unexpected value type");
}

TEST(FileAssociation, IsConfiguredByTheClassAndItsCommandToTheLetter) {
    const HKEY root = HKEY_CLASSES_ROOT;
    const wchar_t* const command = L"osrfile\\shell\\open\\command";
    const wchar_t* const right = L"\"\\MMCMemory\\Tarvex\\Tarvex.exe\" \"%1\"";
    EXPECT_FALSE(isAssociationConfigured()) << "nothing there";
    write(root, L".osr", L"", L"osrfile");
    EXPECT_FALSE(isAssociationConfigured()) << "no command";
    write(root, command, L"Other", right);
    EXPECT_FALSE(isAssociationConfigured()) << "not the default value";
    write(root, command, L"", right);
    EXPECT_TRUE(isAssociationConfigured()) << "the others are not looked at";
    for (const wchar_t* other : {L"\"\\MMCMemory\\Tarvex\\tarvex.exe\" \"%1\"", L"\"\\MMCMemory\\Tarvex\\Tarvex.exe\"",
                                 L"\\MMCMemory\\Tarvex\\Tarvex.exe \"%1\"", L""}) {
        write(root, command, L"", other);
        EXPECT_FALSE(isAssociationConfigured());
    }
    write(root, command, L"", right);
    for (const wchar_t* other :
         {L"OsrFile", L"osrfile2", L"a class with a name that is longer than fifty characters are"}) {
        write(root, L".osr", L"", other);
        EXPECT_FALSE(isAssociationConfigured());
    }
    erase(root, L".osr", L"");
    EXPECT_FALSE(isAssociationConfigured());
    configureAssociation();
    EXPECT_TRUE(isAssociationConfigured());
    writeOtherType(root, command, L"");
    EXPECT_EQ(failureOf([] { isAssociationConfigured(); }), L"Unexpected value type");
    writeOtherType(root, L".osr", L"");
    EXPECT_EQ(failureOf([] { isAssociationConfigured(); }), L"Unexpected value type");
}

TEST(PlatformVersion, HasItsMinorNumberBehindTheFirstDot) {
    const struct {
        const wchar_t* version;
        std::int32_t minor;
    } cases[] = {
        {L"2.15", 15}, {L"2.15.7", 15}, {L"2.9b", 9}, {L"10.007", 7}, {L".4", 4},    {L"2.", 0},
        {L"2", 0},     {L"", 0},        {L"2.x5", 0}, {L"2.-5", 0},   {L"2. 15", 0}, {L"2..15", 0},
    };
    for (const auto& [version, minor] : cases) {
        write(HKEY_LOCAL_MACHINE, L"ORVA", L"Version", version);
        EXPECT_EQ(platformMinorVersion(), minor) << std::string(version, version + std::wcslen(version));
    }
    writeOtherType(HKEY_LOCAL_MACHINE, L"ORVA", L"Version");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Unexpected value type");
    erase(HKEY_LOCAL_MACHINE, L"ORVA", L"Version");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Cannot query the given registry value");
    deleteKey(HKEY_LOCAL_MACHINE, L"ORVA");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Cannot open subkey 'ORVA'");
}
