#include "OrvaUtils/DynamicLibrary.h"
#include "OrvaUtils/LoadLibraryException.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <gtest/gtest.h>

using OrvaUtils::DynamicLibrary;
using namespace testing_panel;

namespace {

constexpr wchar_t TAGS[] = L"tagUserAPI.dll";

const auto failureOf = messageOf<OrvaUtils::LoadLibraryException>;

std::size_t unloadings() {
    return trace({"FreeLibrary"}).size();
}

} // namespace

TEST(DynamicLibrary, LooksUpProceduresByName) {
    const DynamicLibrary library(TAGS, DynamicLibrary::Lifetime::Object);
    EXPECT_NE(library.getAddress(L"TAG_Open"), nullptr);
    EXPECT_NE(library.getAddress(L"TAG_Open"), library.getAddress(L"TAG_Close"));
    EXPECT_EQ(failureOf([&] { library.getAddress(L"TAG_None"); }), L"Get address of TAG_None failed");
    failCall("GetProcAddressW");
    EXPECT_EQ(failureOf([&] { library.getAddress(L"TAG_Open"); }), L"Get address of TAG_Open failed");
    EXPECT_EQ(failureOf([] { DynamicLibrary(L"none.dll", DynamicLibrary::Lifetime::Process); }),
              L"Load none.dll failed");
}

TEST(DynamicLibrary, StaysLoadedOrGoesWithTheObject) {
    startTrace();
    { const DynamicLibrary library(TAGS, DynamicLibrary::Lifetime::Process); }
    EXPECT_EQ(unloadings(), 0U);
    { const DynamicLibrary library(TAGS, DynamicLibrary::Lifetime::Object); }
    EXPECT_EQ(unloadings(), 1U);
    EXPECT_EQ(failureOf([] { DynamicLibrary(L"none.dll", DynamicLibrary::Lifetime::Object); }),
              L"Load none.dll failed");
    EXPECT_EQ(unloadings(), 1U) << "there was nothing to unload";
}
