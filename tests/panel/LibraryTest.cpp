// Libraries loaded by name, and the tag library.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <tagUserAPI.h>
#include <windows.h>

#include <string>

using namespace testing_panel;
using panel::Behaviour;

namespace {

template<class Result, class... Arguments>
auto lookUp(HMODULE library, const wchar_t* name, Result (*)(Arguments...) noexcept) {
    void* const address = reinterpret_cast<void*>(GetProcAddressW(library, name));
    return reinterpret_cast<Result (*)(Arguments...) noexcept>(address);
}

// The tag library as a program has it; open.
struct Tags {
    HMODULE library = LoadLibraryW(L"tagUserAPI.dll");
    decltype(&TAG_Get_Data) get = lookUp(library, L"TAG_Get_Data", &TAG_Get_Data);
    decltype(&TAG_Set_Data) set = lookUp(library, L"TAG_Set_Data", &TAG_Set_Data);
    decltype(&TAG_Delete) remove = lookUp(library, L"TAG_Delete", &TAG_Delete);
    DWORD error = 99;

    Tags() {
        EXPECT_TRUE(lookUp(library, L"TAG_Open", &TAG_Open)(&error));
        EXPECT_EQ(error, 0U);
    }
    // The tag's bytes; empty on failure.
    std::string read(DWORD id, DWORD capacity, DWORD& size) {
        std::string buffer(capacity, '#');
        size = capacity;
        if (!get(id, &size, buffer.data(), &error))
            return {};
        buffer.resize(std::min(size, capacity));
        return buffer;
    }
};

} // namespace

TEST(Libraries, AreFoundWhateverTheCaseWithAndWithoutTheirEnding) {
    const HMODULE core = LoadLibraryW(L"coredll.dll");
    ASSERT_NE(core, nullptr);
    EXPECT_EQ(LoadLibraryW(L"COREDLL"), core);
    EXPECT_EQ(lookUp(core, L"GetTickCount", &GetTickCount)(), GetTickCount());
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
    devices().setPresent("tags", false);
    EXPECT_EQ(LoadLibraryW(L"tagUserAPI.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(TagLibrary, ReadsWritesAndDeletesTags) {
    Tags tags;
    DWORD size = 0;
    EXPECT_EQ(tags.read(18, 2, size), "\x02\x04"); // 1026, little-endian
    EXPECT_EQ(size, 2U);
    EXPECT_EQ(tags.read(48, 16, size).size(), 16U);
    std::string large(40, 'x');
    large[20] = '\0';
    EXPECT_TRUE(tags.set(7, 40, large.data(), &tags.error));
    EXPECT_EQ(devices().tag(7), large);
    EXPECT_EQ(tags.read(7, 10, size), large.substr(0, 10)); // what fits, and how much there is
    EXPECT_EQ(size, 40U);
    EXPECT_EQ(tags.error, 0U);
    EXPECT_EQ(tags.read(7, 50, size), large);
    DWORD number = 0;
    EXPECT_TRUE(lookUp(tags.library, L"TAG_Get_Valid_Ids_Nr", &TAG_Get_Valid_Ids_Nr)(&number, &tags.error));
    EXPECT_EQ(number, 3U);
    EXPECT_TRUE(lookUp(tags.library, L"TAG_GetDBsize", &TAG_GetDBsize)(&number, &tags.error));
    EXPECT_EQ(number, 58U);
    EXPECT_TRUE(tags.remove(7, &tags.error));
    EXPECT_EQ(tags.read(7, 50, size), "");
    EXPECT_EQ(tags.error, 2U);
    EXPECT_FALSE(tags.remove(7, &tags.error));
    EXPECT_TRUE(lookUp(tags.library, L"TAG_Format", &TAG_Format)(&tags.error));
    EXPECT_TRUE(devices().tags().empty());
}

TEST(TagLibrary, WantsToBeOpen) {
    Tags tags;
    const auto close = lookUp(tags.library, L"TAG_Close", &TAG_Close);
    EXPECT_TRUE(close(&tags.error));
    EXPECT_FALSE(tags.set(1, 1, "x", &tags.error));
    EXPECT_EQ(tags.error, 21U);
    EXPECT_FALSE(close(&tags.error));
    EXPECT_EQ(devices().tag(1), std::nullopt);
}

TEST(TagLibrary, FailsOnDemand) {
    Tags tags;
    DWORD size = 0;
    devices().setBehaviour("tags", {Behaviour::Kind::refuse, 7}, "TAG_Get_Data");
    EXPECT_EQ(tags.read(18, 2, size), "");
    EXPECT_EQ(tags.error, 7U);
    devices().setBehaviour("tags", {Behaviour::Kind::code, 9}, "TAG_Get_Data");
    EXPECT_EQ(tags.read(18, 2, size), "\x02\x04"); // it succeeds, but
    EXPECT_EQ(tags.error, 9U);
    devices().setBehaviour("tags", {});
    writeText(panelDirectory() / "devices/tags/18", "not hexadecimal");
    EXPECT_EQ(tags.read(18, 2, size), "");
    EXPECT_EQ(tags.error, ERROR_GEN_FAILURE);
}
