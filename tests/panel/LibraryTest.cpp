// Libraries loaded by name.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <tagUserAPI.h>
#include <windows.h>

using namespace testing_panel;

TEST(Libraries, AreFoundWhateverTheCaseWithAndWithoutTheirEnding) {
    const HMODULE core = LoadLibraryW(L"coredll.dll");
    ASSERT_NE(core, nullptr);
    EXPECT_EQ(LoadLibraryW(L"COREDLL"), core);
    void* const address = reinterpret_cast<void*>(GetProcAddressW(core, L"GetTickCount"));
    EXPECT_EQ(reinterpret_cast<decltype(&GetTickCount)>(address)(), GetTickCount());
    EXPECT_EQ(GetProcAddressW(core, L"gettickcount"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    const HMODULE tags = LoadLibraryW(L"taguserapi.DLL");
    EXPECT_NE(tags, core);
    EXPECT_EQ(GetProcAddressW(tags, L"GetTickCount"), nullptr);
    EXPECT_TRUE(FreeLibrary(core));
    EXPECT_NE(GetProcAddressW(core, L"Sleep"), nullptr);
    EXPECT_TRUE(FreeLibrary(core));
    EXPECT_EQ(GetProcAddressW(core, L"Sleep"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(FreeLibrary(core));
    EXPECT_EQ(LoadLibraryW(L"other.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(TagLibrary, WantsToBeOpen) {
    DWORD error = 0;
    EXPECT_FALSE(TAG_Set_Data(1, 1, "x", &error));
    EXPECT_EQ(error, 21U);
    EXPECT_EQ(devices().tag(1), std::nullopt);
}
