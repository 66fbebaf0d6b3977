#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/ValueComparer.h"
#include "OrvaUtils/Registry/ValueWriter.h"
#include "OrvaUtils/Registry/Values.h"
#include "OrvaUtils/Registry/Writing.h"
#include "OrvaUtils/Text.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

using namespace OrvaUtils::Registry;
using namespace testing_panel;
using OrvaUtils::toText16;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Texts = std::vector<std::wstring>;

class RegistryValue : public testing::Test {
protected:
    void store(const wchar_t* name, DWORD type, const Bytes& bytes) const {
        const BYTE none = 0;
        ASSERT_EQ(RegSetValueExW(key.handle(), name, 0, type, bytes.empty() ? &none : bytes.data(),
                                 static_cast<DWORD>(bytes.size())),
                  0);
    }
    void storeText(const wchar_t* name, DWORD type, std::wstring_view text) const {
        store(name, type, toText16(text));
    }
    // The type and the bytes as they are in the registry.
    std::pair<DWORD, Bytes> stored(const wchar_t* name) const {
        DWORD type = 0;
        Bytes bytes(4096);
        DWORD size = 4096;
        EXPECT_EQ(RegQueryValueExW(key.handle(), name, nullptr, &type, bytes.data(), &size), 0);
        bytes.resize(size);
        return {type, bytes};
    }

    const Key key{createKey(HKEY_LOCAL_MACHINE, L"Test", 0)};
    const HKEY handle = key.handle();
};

const auto valueFailure = messageOf<RegistryException>;

// Of a class that the library does not have.
struct UnknownValue : Value {
    UnknownValue() : Value(L"unknown") {}
    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitOther(*this, context);
    }
};

} // namespace

TEST_F(RegistryValue, OfTextIsReadUpToItsFirstZero) {
    const struct {
        std::wstring_view stored;
        const wchar_t* read;
    } cases[] = {
        {{L"text\0", 5}, L"text"},
        {{L"text", 4}, L"text"}, // unterminated
        {{L"te\0xt\0", 6}, L"te"},
        {{L"text\0\0\0", 7}, L"text"}, // over-terminated
        {{}, L""},
        {{L"\0", 1}, L""},
        {{L"1234567890123456789012345", 25}, L"1234567890123456789012345"}, // fills the first buffer
        {{L"12345678901234567890123456", 26}, L"12345678901234567890123456"},
    };
    for (const auto& [text, read] : cases) {
        storeText(L"", REG_SZ, text);
        storeText(L"expand", REG_EXPAND_SZ, text);
        EXPECT_EQ(readString(handle, L""), read);
        EXPECT_EQ(readExpandString(handle, L"expand"), read);
    }
    store(L"odd", REG_SZ, {'a', 0, 'b'});
    EXPECT_EQ(readString(handle, L"odd"), L"a");
}

TEST_F(RegistryValue, OfTextsIsSplitUpToAnEmptyOne) {
    storeText(L"multi", REG_MULTI_SZ, {L"a\0bc", 4}); // without the last zeros
    EXPECT_EQ(readMultiString(handle, L"multi"), (Texts{L"a", L"bc"}));
    storeText(L"multi", REG_MULTI_SZ, {L"a\0\0b\0\0", 6});
    EXPECT_EQ(readMultiString(handle, L"multi"), Texts{L"a"});
}

TEST_F(RegistryValue, IsQueriedAgainOnlyWhenTheFirstBufferIsTooSmall) {
    for (const std::size_t size : {0U, 50U, 51U, 3000U}) {
        Bytes bytes(size);
        std::generate(bytes.begin(), bytes.end(), [i = 0]() mutable { return static_cast<std::uint8_t>(++i); });
        store(L"bytes", REG_BINARY, bytes);
        startTrace();
        EXPECT_EQ(readBinary(handle, L"bytes"), bytes);
        EXPECT_EQ(trace().size(), size > 50 ? 2U : 1U);
        failCall("RegQueryValueExW");
        startTrace();
        EXPECT_EQ(valueFailure([&] { readBinary(handle, L"bytes"); }), L"Cannot query the given registry value");
        EXPECT_EQ(trace().size(), 1U) << "any other error is final";
    }
}

TEST_F(RegistryValue, OfANumberIsItsFirstFourBytesAsTheyStand) {
    for (const DWORD type : {REG_DWORD, REG_DWORD_BIG_ENDIAN}) {
        const auto read = type == REG_DWORD ? readDword : readDwordBigEndian;
        store(L"number", type, {0xFE, 0xFF, 0xFF, 0xFF, 0x55});
        EXPECT_EQ(read(handle, L"number"), 0xFFFFFFFEU);
        store(L"number", type, {7, 1});
        EXPECT_EQ(read(handle, L"number"), 0x107U) << "what is missing counts as zero, whatever the buffer held";
        store(L"number", type, {});
        EXPECT_EQ(read(handle, L"number"), 0U);
    }
}

TEST_F(RegistryValue, IsWrittenReadAndCompared) {
    const struct {
        std::unique_ptr<Value> value;
        DWORD type;
        Bytes bytes;
        std::unique_ptr<Value> other;
        const wchar_t* different;
        const wchar_t* refused;
    } cases[] = {
        {std::make_unique<RegSzValue>(L"v", L"T"),
         REG_SZ,
         {'T', 0, 0, 0},
         std::make_unique<RegSzValue>(L"v", L"t"),
         L"Different string values",
         L"Failed to set REG_SZ value"},
        {std::make_unique<RegMultiSzValue>(L"v", Texts{L"a", L"b"}),
         REG_MULTI_SZ,
         {'a', 0, 0, 0, 'b', 0, 0, 0, 0, 0},
         std::make_unique<RegMultiSzValue>(L"v", Texts{L"a"}),
         L"Different multi string values",
         L"Failed to set REG_MULTI_SZ value"},
        {std::make_unique<RegExpandSzValue>(L"v", L"A\u20AC"),
         REG_EXPAND_SZ,
         {'A', 0, 0xAC, 0x20, 0, 0},
         std::make_unique<RegExpandSzValue>(L"v", L"a\u20AC"),
         L"Different expand string values",
         L"Failed to set REG_EXPAND_SZ value"},
        {std::make_unique<RegDwordBigEndianValue>(L"v", 0x01020304),
         REG_DWORD_BIG_ENDIAN,
         {4, 3, 2, 1},
         std::make_unique<RegDwordBigEndianValue>(L"v", 0x04030201),
         L"Different DWORD values",
         L"Failed to set REG_DWORD_BE value"},
        {std::make_unique<RegDwordLittleEndianValue>(L"v", 0x01020304),
         REG_DWORD,
         {4, 3, 2, 1},
         std::make_unique<RegDwordLittleEndianValue>(L"v", 2),
         L"Different DWORD values",
         L"Failed to set REG_DWORD_LE value"},
        {std::make_unique<RegBinaryValue>(L"v", Bytes{}),
         REG_BINARY,
         {},
         std::make_unique<RegBinaryValue>(L"v", Bytes{1}),
         L"Different binary values",
         L"Failed to set REG_BINARY value"},
    };
    ValueWriter writer;
    ValueComparer comparer;
    for (const auto& each : cases) {
        each.value->accept(writer, handle);
        EXPECT_EQ(stored(L"v"), std::make_pair(each.type, each.bytes));
        const std::unique_ptr<Value> read = readValue(handle, L"v");
        EXPECT_EQ(read->name, L"v");
        EXPECT_EQ(valueFailure([&] { read->accept(comparer, handle); }), L"none");
        EXPECT_EQ(valueFailure([&] { each.value->accept(comparer, handle); }), L"none") << "which is of its type";
        EXPECT_EQ(valueFailure([&] { each.other->accept(comparer, handle); }), each.different);
        failCall("RegSetValueExW");
        EXPECT_EQ(valueFailure([&] { each.other->accept(writer, handle); }), each.refused);
    }
    EXPECT_EQ(valueFailure([&] { UnknownValue().accept(comparer, handle); }), L"Unexpected value type");
    EXPECT_EQ(valueFailure([&] { UnknownValue().accept(writer, handle); }),
              L"Write of registry value type not supported");
}

TEST_F(RegistryValue, OfAnotherTypeIsNoneForATypedRead) {
    const std::pair<DWORD, std::function<void(const wchar_t*)>> reads[] = {
        {REG_SZ, [&](const wchar_t* name) { readString(handle, name); }},
        {REG_EXPAND_SZ, [&](const wchar_t* name) { readExpandString(handle, name); }},
        {REG_BINARY, [&](const wchar_t* name) { readBinary(handle, name); }},
        {REG_DWORD, [&](const wchar_t* name) { readDword(handle, name); }},
        {REG_DWORD_BIG_ENDIAN, [&](const wchar_t* name) { readDwordBigEndian(handle, name); }},
        {REG_MULTI_SZ, [&](const wchar_t* name) { readMultiString(handle, name); }},
    };
    for (const DWORD type : {1U, 2U, 3U, 4U, 5U, 7U, 0U, 6U, 11U}) {
        store(L"value", type, Bytes(60));
        for (const auto& each : reads) {
            EXPECT_EQ(valueFailure([&] { each.second(L"value"); }),
                      each.first == type ? L"none" : L"Unexpected value type");
        }
        const bool known = type != 0 && type != 6 && type < 8;
        EXPECT_EQ(valueFailure([&] { readValue(handle, L"value"); }), known ? L"none" : L"Invalid datatype given");
    }
    EXPECT_EQ(valueFailure([&] { makeValue(L"x", nullptr, 0, 6); }), L"Invalid datatype given");
    EXPECT_EQ(valueFailure([&] { readValue(handle, L"missing"); }), L"Cannot query the given registry value");
    failCall("RegQueryValueExW", 2);
    EXPECT_EQ(valueFailure([&] { readBinary(handle, L"value"); }), L"Cannot query the given registry value");
}
