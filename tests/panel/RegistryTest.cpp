// The registry, as the platform documents it.
#include "platform/panel/Registry.h"

#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

using namespace testing_panel;
using panel::registry::Bytes;

namespace {

HKEY create(HKEY root, const wchar_t* path, DWORD* disposition = nullptr) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(root, path, 0, nullptr, 0, 0, nullptr, &key, disposition), LONG{ERROR_SUCCESS});
    return key;
}

LONG open(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    const LONG result = RegOpenKeyExW(root, path, 0, 0, &key);
    if (result == ERROR_SUCCESS)
        RegCloseKey(key);
    return result;
}

LONG set(HKEY key, const wchar_t* name, DWORD type, const Bytes& data) {
    return RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
}

} // namespace

TEST(Registry, KeysAreMadeWithThoseAboveThemAndFoundInAnyCase) {
    DWORD disposition = 0;
    RegCloseKey(create(HKEY_CLASSES_ROOT, L"One\\Two\\Three", &disposition));
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    const HKEY two = create(HKEY_CLASSES_ROOT, L"one\\TWO", &disposition);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(open(two, L"three"), LONG{ERROR_SUCCESS});
    EXPECT_EQ(open(two, nullptr), LONG{ERROR_SUCCESS}); // itself
    EXPECT_EQ(open(two, L"Two"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(open(HKEY_LOCAL_MACHINE, L"One"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(open(HKEY_CLASSES_ROOT, L"One\\\\Two"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(RegCloseKey(two), LONG{ERROR_SUCCESS});
    EXPECT_EQ(RegCloseKey(two), LONG{ERROR_INVALID_HANDLE});
    EXPECT_EQ(open(two, L"Three"), LONG{ERROR_INVALID_HANDLE});
    panel::registry::Tree tree = panel::Panel(panelDirectory()).registry(panel::registry::Copy::now);
    EXPECT_EQ(tree.make("HKEY_CLASSES_ROOT\\one")->name, "One"); // keeps the case of its maker
}

TEST(Registry, KeysLieSixteenLevelsBelowARootAtMost) {
    std::wstring path = L"1";
    for (int level = 2; level <= 16; ++level)
        path += L"\\x";
    const HKEY deepest = create(HKEY_LOCAL_MACHINE, path.c_str());
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(deepest, L"x", 0, nullptr, 0, 0, nullptr, &key, nullptr), LONG{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(open(deepest, L"x"), LONG{ERROR_FILE_NOT_FOUND});
    RegCloseKey(deepest);
}

TEST(Registry, ValuesAreBytesWithAType) {
    const HKEY key = create(HKEY_LOCAL_MACHINE, L"Values");
    const Bytes unterminated{0x41, 0x00, 0x42};
    EXPECT_EQ(set(key, L"Text", REG_SZ, unterminated), LONG{ERROR_SUCCESS});
    EXPECT_EQ(set(key, L"", 99, {}), LONG{ERROR_SUCCESS});
    DWORD type = 0;
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(key, L"TEXT", nullptr, &type, nullptr, &size), LONG{ERROR_SUCCESS});
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(size, 3U);
    BYTE data[3] = {};
    size = 2;
    EXPECT_EQ(RegQueryValueExW(key, L"Text", nullptr, nullptr, data, &size), LONG{ERROR_MORE_DATA});
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(RegQueryValueExW(key, L"Text", nullptr, nullptr, data, &size), LONG{ERROR_SUCCESS});
    EXPECT_EQ(Bytes(data, data + size), unterminated);
    EXPECT_EQ(RegQueryValueExW(key, nullptr, nullptr, &type, nullptr, nullptr), LONG{ERROR_SUCCESS}); // the default one
    EXPECT_EQ(type, 99U);
    EXPECT_EQ(RegQueryValueExW(key, L"Other", nullptr, nullptr, nullptr, nullptr), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(RegQueryValueExW(key, L"Text", nullptr, nullptr, data, nullptr), LONG{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(set(key, std::wstring(256, L'n').c_str(), REG_SZ, {}), LONG{ERROR_INVALID_PARAMETER});

    EXPECT_EQ(RegDeleteValueW(key, L"TEXT"), LONG{ERROR_SUCCESS});
    EXPECT_EQ(RegDeleteValueW(key, L"Text"), LONG{ERROR_FILE_NOT_FOUND});
    RegCloseKey(key);
}

TEST(Registry, AKeyGoesWithAllBelowItButNotWhileOneIsOpen) {
    for (const wchar_t* name : {L"a\\b", L"a\\c", L"a\\d\\e", L"ab"})
        RegCloseKey(create(HKEY_CURRENT_USER, name));
    const HKEY deep = create(HKEY_CURRENT_USER, L"a\\d\\e");
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"A"), LONG{ERROR_ACCESS_DENIED});
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"A\\C"), LONG{ERROR_SUCCESS});
    EXPECT_FALSE(CloseHandle(deep)); // has a function of its own
    RegCloseKey(deep);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L""), LONG{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"a"), LONG{ERROR_SUCCESS});
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"a"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(open(HKEY_CURRENT_USER, L"a\\b"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(open(HKEY_CURRENT_USER, L"ab"), LONG{ERROR_SUCCESS});
}

TEST(Registry, AFlushStoresOneRoot) {
    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER})
        RegCloseKey(create(root, L"flushed"));
    EXPECT_EQ(RegFlushKey(HKEY_CURRENT_USER), LONG{ERROR_SUCCESS});
    const panel::registry::Tree flash = panel::Panel(panelDirectory()).registry(panel::registry::Copy::flash);
    EXPECT_NE(flash.find("HKEY_CURRENT_USER\\flushed"), nullptr);
    EXPECT_EQ(flash.find("HKEY_CLASSES_ROOT\\flushed"), nullptr);
}

TEST(Registry, FilesKeepEveryByte) {
    const HKEY key = create(HKEY_USERS, L"\u00c4\u4e2d \"q\"");
    const std::vector<std::pair<DWORD, Bytes>> values = {
        {REG_SZ, {0x41, 0, 0, 0}},
        {REG_SZ, {0x41, 0}}, // unterminated
        {REG_SZ, {0x00, 0xD8, 0, 0}}, // half a surrogate pair
        {REG_EXPAND_SZ, {0x3D, 0xD8, 0x00, 0xDE, 0, 0}}, // a whole one
        {REG_MULTI_SZ, {0x41, 0, 0, 0, 0x42, 0, 0, 0, 0, 0}},
        {REG_MULTI_SZ, {0, 0}},
        {REG_DWORD, {1, 2, 3, 0xFF}},
        {REG_DWORD, {1, 2, 3}},
        {12345, {7}},
    };
    for (std::size_t index = 0; index < values.size(); ++index)
        EXPECT_EQ(set(key, std::wstring(1, static_cast<wchar_t>(L'a' + index)).c_str(), values[index].first,
                      values[index].second),
                  LONG{ERROR_SUCCESS});
    for (std::size_t index = 0; index < values.size(); ++index) {
        DWORD type = 0;
        BYTE data[64];
        DWORD size = sizeof data;
        const std::wstring name(1, static_cast<wchar_t>(L'A' + index));
        ASSERT_EQ(RegQueryValueExW(key, name.c_str(), nullptr, &type, data, &size), LONG{ERROR_SUCCESS});
        EXPECT_EQ(type, values[index].first);
        EXPECT_EQ(Bytes(data, data + size), values[index].second) << index;
    }
    RegCloseKey(key);
}
