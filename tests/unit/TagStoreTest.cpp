#include "OrvaUtils/Tags/TagStore.h"
#include "OrvaUtils/LoadLibraryException.h"
#include "OrvaUtils/Tags/TagException.h"
#include "OrvaUtils/Text.h"
#include "tests/support/TestPanel.h"

#include <functional>
#include <gtest/gtest.h>

using namespace testing_panel;
using OrvaUtils::Tags::TagException;
using OrvaUtils::Tags::TagStore;
using panel::Behaviour;

namespace {

using Bytes = std::vector<std::uint8_t>;

// "TAG_Open 5", as the exception has it, "Load x failed", or "none".
std::string tagFailure(const std::function<void()>& action) {
    try {
        action();
    } catch (const TagException& failure) {
        return OrvaUtils::toUtf8(failure.message()) + ' ' + std::to_string(failure.errorCode());
    } catch (const OrvaUtils::LoadLibraryException& failure) {
        return OrvaUtils::toUtf8(failure.message());
    }
    return "none";
}

std::size_t unloadings() {
    return trace({"FreeLibrary"}).size();
}

} // namespace

TEST(TagStore, ReadsAndWritesTags) {
    TagStore store;
    store.setData(7, {1, 2, 3, 4, 5});
    Bytes three(3);
    EXPECT_EQ(store.getData(7, three), 5U);
    EXPECT_EQ(three, (Bytes{1, 2, 3}));
    EXPECT_EQ(store.getDataGrowing(7, three), 5U);
    EXPECT_EQ(three, (Bytes{1, 2, 3, 4, 5}));
    Bytes eight(8, 99);
    EXPECT_EQ(store.getDataGrowing(7, eight), 5U);
    EXPECT_EQ(eight, (Bytes{1, 2, 3, 4, 5, 99, 99, 99}));
    store.format();
    EXPECT_TRUE(devices().tags().empty());
}

TEST(TagStore, NamesTheFunctionThatFailsAndItsErrorCode) {
    TagStore store;
    Bytes buffer(2);
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"TAG_Get_Data", [&] { store.getData(18, buffer); }},
        {"TAG_Set_Data", [&] { store.setData(7, {1}); }},
        {"TAG_Format", [&] { store.format(); }},
    };
    devices().setTag(18, "ab");
    for (const auto& [function, action] : cases) {
        // One answers no, the other yes and yet reports an error.
        for (const Behaviour::Kind kind : {Behaviour::Kind::refuse, Behaviour::Kind::code}) {
            devices().setBehaviour("tags", {kind, 77}, function);
            EXPECT_EQ(tagFailure(action), function + std::string(" 77"));
        }
        devices().setBehaviour("tags", {});
        EXPECT_EQ(tagFailure(action), "none") << function;
    }
    EXPECT_EQ(tagFailure([&] { store.getData(5, buffer); }), "TAG_Get_Data 2") << "there is no such tag";
}

TEST(TagStore, GrowsABufferWhateverTheFirstReadAnswers) {
    devices().setTag(48, "0123456789abcdef");
    TagStore store;
    Bytes buffer(1);
    const auto read = [&] { store.getDataGrowing(48, buffer); };
    devices().setBehaviour("tags", {Behaviour::Kind::code, 77}, "TAG_Get_Data"); // which tells the size all the same
    startTrace();
    EXPECT_EQ(tagFailure(read), "TAG_Get_Data 77");
    EXPECT_EQ(trace({"TAG_Get_Data"}).size(), 2U);
    EXPECT_EQ(buffer.size(), 16U);
    devices().setBehaviour("tags", {});
    buffer.resize(1);
    failCall("TAG_Get_Data", 2);
    EXPECT_EQ(tagFailure(read), "TAG_Get_Data 31") << "the last read counts";
    EXPECT_EQ(tagFailure(read), "none");
}

TEST(TagStore, ThatCannotBeOpenedIsUnloaded) {
    for (const Behaviour::Kind kind : {Behaviour::Kind::refuse, Behaviour::Kind::code}) {
        devices().setBehaviour("tags", {kind, 9}, "TAG_Open");
        startTrace();
        EXPECT_EQ(tagFailure([] { const TagStore store; }), "TAG_Open 9");
        EXPECT_EQ(unloadings(), 1U);
    }
    devices().setBehaviour("tags", {});
    failCall("GetProcAddressW", 3);
    startTrace();
    EXPECT_EQ(tagFailure([] { const TagStore store; }), "Get address of TAG_Close failed");
    EXPECT_EQ(unloadings(), 1U);
    devices().setPresent("tags", false);
    EXPECT_EQ(tagFailure([] { const TagStore store; }), "Load tagUserAPI.dll failed");
}

TEST(TagStore, ThatCannotBeClosedIsUnloadedAllTheSame) {
    devices().setBehaviour("tags", {Behaviour::Kind::refuse, 9}, "TAG_Close");
    startTrace();
    EXPECT_EQ(tagFailure([] { const TagStore store; }), "TAG_Close 9");
    EXPECT_EQ(unloadings(), 1U);
    const auto failTwice = [] {
        const TagStore store;
        throw TagException(L"first", 1);
    };
    EXPECT_EQ(tagFailure(failTwice), "first 1") << "the first failure is the one that is told";
}
