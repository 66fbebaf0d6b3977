#include "OrvaUtils/Text.h"

#include <gtest/gtest.h>

using namespace OrvaUtils;

TEST(Text, ConvertsUtf8BothWays) {
    const struct {
        const char* utf8;
        const wchar_t* wide;
    } cases[] = {
        {"", L""},
        {"\\MMCMemory", L"\\MMCMemory"},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC", L"gr\u00FC\u00DF \u20AC"},
        {"a\xF0\x9F\x98\x80z", L"a\U0001F600z"},
        {"\xEF\xBF\xBF\xED\x9F\xBF", L"\uFFFF\uD7FF"},
    };
    for (const auto& [utf8, wide] : cases) {
        EXPECT_EQ(toWide(utf8), wide);
        EXPECT_EQ(toUtf8(wide), utf8);
    }
}

TEST(Text, ReplacesWhatIsNoUtf8) {
    const struct {
        const char* utf8;
        const wchar_t* wide;
    } cases[] = {
        {"a\xFFz", L"a\uFFFDz"}, // no lead byte
        {"a\x80z", L"a\uFFFDz"}, // a trail byte alone
        {"a\xC3z", L"a\uFFFDz"}, // a sequence that breaks off
        {"a\xE2\x82", L"a\uFFFD"}, // and one at the end
        {"a\xC0\xAFz", L"a\uFFFDz"}, // overlong
        {"a\xED\xA0\x80z", L"a\uFFFDz"}, // a surrogate
        {"a\xF4\x90\x80\x80z", L"a\uFFFDz"}, // past the last code point
    };
    for (const auto& [utf8, wide] : cases) {
        EXPECT_EQ(toWide(utf8), wide);
    }
}

TEST(Text, ReplacesUnpairedSurrogates) {
    const wchar_t high = static_cast<wchar_t>(0xDBFF);
    const wchar_t low = static_cast<wchar_t>(0xDC00);
    EXPECT_EQ(toUtf8(std::wstring{L'a', high}), "a\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(std::wstring{high, L'a'}), "\xEF\xBF\xBD"
                                                "a");
    EXPECT_EQ(toUtf8(std::wstring{low, high}), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, Has16BitsACharacterInRecords) {
    const struct {
        std::vector<std::uint8_t> bytes;
        std::wstring text;
    } cases[] = {
        {{}, L""},
        {{'a', 0, 0xAC, 0x20, 0xFF, 0xFF, 0, 0}, std::wstring(L"a\u20AC\uFFFF\0", 4)},
        {{0x00, 0xD8, 0x00, 0xDC, 0xFF, 0xDB, 0xFF, 0xDF}, L"\U00010000\U0010FFFF"},
        {{0x3D, 0xD8, 'z', 0}, {static_cast<wchar_t>(0xD83D), L'z'}}, // unpaired
        {{0x00, 0xDE, 0x3D, 0xD8}, {static_cast<wchar_t>(0xDE00), static_cast<wchar_t>(0xD83D)}},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(fromText16(bytes.data(), bytes.size()), text);
        EXPECT_EQ(toText16(text), bytes);
    }
    const std::uint8_t odd[] = {'a', 0, 'b'};
    EXPECT_EQ(fromText16(odd, sizeof odd), L"a");
}

TEST(Text, WidensBytesAndWritesDecimals) {
    EXPECT_EQ(widen("a\xE9"), L"a\u00E9");
    EXPECT_EQ(decimal(0), L"0");
    EXPECT_EQ(decimal(-2147483648LL), L"-2147483648");
    EXPECT_EQ(decimal(4294967295LL), L"4294967295");
}

TEST(Text, ComparesWithoutCase) {
    EXPECT_TRUE(equalIgnoringCase(L"\\MMCMemory\\Tarvex", L"\\mmcmemory\\TARVEX"));
    EXPECT_FALSE(equalIgnoringCase(L"\\MMCMemory\\Tarvex", L"\\MMCMemory\\Tarvex2"));
    EXPECT_FALSE(equalIgnoringCase(L"a_", L"a?"));
}
