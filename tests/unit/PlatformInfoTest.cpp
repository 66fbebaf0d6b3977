#include "OrvaUtils/PlatformInfo/PlatformInfo.h"
#include "OrvaUtils/PlatformInfo/PlatformInfoException.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Text.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>
#include <set>
#include <windows.h>

using namespace testing_panel;
using OrvaUtils::PlatformInfo;
using panel::Behaviour;

namespace {

const auto infoFailure = messageOf<OrvaUtils::PlatformInfoException>;

std::string guid() {
    const PlatformInfo::Guid bytes = PlatformInfo::instance().getGuid();
    return {bytes.begin(), bytes.end()};
}

// How often the store was opened since startTrace.
std::size_t openings() {
    return trace({"TAG_Open"}).size();
}

} // namespace

TEST(PlatformInfo, KnowsPlatformTypesAndModels) {
    const char* const names[] = {"WinCE-X86", "WinCE-ARM", "Win32", "Win64"};
    for (std::uint32_t type = 1; type <= 4; ++type) {
        EXPECT_EQ(PlatformInfo::platformTypeToString(type), names[type - 1]);
        EXPECT_EQ(PlatformInfo::platformTypeFromString(names[type - 1]), type);
    }
    EXPECT_EQ(PlatformInfo::instance().getPlatformType(), 2U);
    EXPECT_EQ(infoFailure([] { PlatformInfo::platformTypeToString(5); }), L"Unexpected platform type");
    EXPECT_EQ(infoFailure([] { PlatformInfo::platformTypeFromString("win32"); }), L"Unexpected platform type");
    std::set<std::wstring> models;
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        models.insert(PlatformInfo::getModelName(code));
    }
    EXPECT_EQ(models.size(), 31U + 1) << "and one for all unknown ones";
    EXPECT_EQ(PlatformInfo::getModelName(0xABCD0409), L"unknown");
    EXPECT_EQ(PlatformInfo::getModelName(0xABCD0408), PlatformInfo::getModelName(0x408)) << "only 16 bits count";
}

TEST(PlatformInfo, ReadsTheTagsOnce) {
    devices().setTag(18, "\x06\x04");
    devices().setTag(48, "0123456789abcdef");
    devices().setBehaviour("tags", {Behaviour::Kind::refuse, 5}, "TAG_Close"); // which does not matter
    startTrace();
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x406);
    EXPECT_EQ(trace({"FreeLibrary"}).size(), 1U);
    devices().setTag(18, "\x01\x01");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x406);
    EXPECT_EQ(guid(), "0123456789abcdef");
    EXPECT_EQ(openings(), 1U);
}

TEST(PlatformInfo, TriesATagStoreAgainThatCannotBeRead) {
    devices().setTag(18, "\x02\x04");
    startTrace();
    devices().setPresent("tags", false);
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0);
    EXPECT_EQ(infoFailure([] { guid(); }), L"Guid not present");
    devices().setPresent("tags", true);
    for (const char* function : {"TAG_Open", "TAG_Get_Data"}) {
        devices().setBehaviour("tags", {Behaviour::Kind::refuse, 5}, function);
        EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0);
        EXPECT_EQ(infoFailure([] { guid(); }), L"Guid not present");
        devices().setBehaviour("tags", {});
    }
    EXPECT_EQ(openings(), 4U);
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x402);
    EXPECT_NE(guid(), "");
    EXPECT_EQ(openings(), 5U);
}

TEST(PlatformInfo, HasModelAndGuidEachWithoutTheOtherWhichItAsksForAgain) {
    devices().setTag(18, "\x03\x04");
    devices().removeTag(48);
    startTrace();
    EXPECT_EQ(infoFailure([] { guid(); }), L"Guid not present");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x403);
    EXPECT_EQ(openings(), 1U);
    devices().removeTag(18);
    devices().setTag(48, "0123456789abcdef");
    EXPECT_EQ(guid(), "0123456789abcdef");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x403) << "what was read is kept";
    EXPECT_EQ(openings(), 2U);
}

TEST(PlatformInfo, HasTheGuidAlsoWithoutAModel) {
    devices().removeTag(18);
    devices().setTag(48, "0123456789abcdef");
    EXPECT_EQ(guid(), "0123456789abcdef");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0);
    devices().setTag(18, "\x04\x04");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x404);
}

TEST(PlatformInfo, TakesAShorterTagForNoneAndTheBeginningOfALongerOne) {
    devices().setTag(18, "\x06");
    for (const char* identity : {"", "0123456789abcde"}) {
        devices().setTag(48, identity);
        EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0);
        EXPECT_EQ(infoFailure([] { guid(); }), L"Guid not present") << identity;
    }
    devices().setTag(18, {"\x06\x04\0\0", 4});
    devices().setTag(48, "0123456789abcdefg");
    EXPECT_EQ(PlatformInfo::instance().getModelCode(), 0x406);
    EXPECT_EQ(guid(), "0123456789abcdef");
}

TEST(PlatformInfo, HasTheDevicesNameFromTheRegistry) {
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Ident", 0, 0, &key), 0);
    const std::vector<std::uint8_t> name = OrvaUtils::toText16(L"Line 4 \u00FC\u20AC");
    RegSetValueExW(key, L"Name", 0, REG_SZ, name.data(), static_cast<DWORD>(name.size()));
    EXPECT_EQ(PlatformInfo::getDeviceName(), "Line 4 \xFC?");
    RegDeleteValueW(key, L"Name");
    EXPECT_THROW(PlatformInfo::getDeviceName(), OrvaUtils::Registry::RegistryException);
    RegCloseKey(key);
}
