#include "app/PlatformVersion.h"
#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/Writing.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <memory>

using namespace OrvaUtils::Registry;

TEST(PlatformVersion, HasItsMinorNumberBehindTheFirstDot) {
    const struct {
        const wchar_t* version;
        std::int32_t minor;
    } cases[] = {
        {L"2.15", 15}, {L"2.15.7", 15}, {L"2.9b", 9}, {L"10.007", 7}, {L".4", 4},    {L"2.", 0},
        {L"2", 0},     {L"", 0},        {L"2.x5", 0}, {L"2.-5", 0},   {L"2. 15", 0}, {L"2..15", 0},
    };
    const auto failureOf = messageOf<RegistryException>;
    auto key = std::make_unique<Key>(createKey(HKEY_LOCAL_MACHINE, L"ORVA", 0));
    for (const auto& [version, minor] : cases) {
        writeString(key->handle(), L"Version", version);
        EXPECT_EQ(platformMinorVersion(), minor) << std::string(version, version + std::wcslen(version));
    }
    writeExpandString(key->handle(), L"Version", L"");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Unexpected value type");
    deleteValue(key->handle(), L"Version");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Cannot query the given registry value");
    key.reset();
    deleteKey(HKEY_LOCAL_MACHINE, L"ORVA");
    EXPECT_EQ(failureOf([] { platformMinorVersion(); }), L"Cannot open subkey 'ORVA'");
}
