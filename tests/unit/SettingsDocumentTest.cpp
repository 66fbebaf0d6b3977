#include "OrvaUtils/Xml/SettingsDocument.h"

#include "OrvaUtils/Xml/DocumentFile.h"
#include "tests/support/TestPanel.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <new>

using namespace testing_panel;
using OrvaUtils::Xml::SettingsDocument;

namespace {

const char* const FILE_PATH = "\\Settings\\EMMC.xml";

SettingsDocument subject() {
    return {L"\\Settings\\EMMC.xml", "EMMC"};
}

} // namespace

TEST(SettingsDocument, IsReadBackAsItWasWritten) {
    SettingsDocument written = subject();
    EXPECT_FALSE(written.open());
    written.createEmpty();
    written.write("Dropped", true);
    EXPECT_FALSE(written.save()) << "its directory is missing";
    writeFile("\\Settings\\unrelated", "");
    written.createEmpty();
    written.write("On", true);
    written.write("Off", false);
    written.write("Least", std::int32_t{-2147483647 - 1});
    written.write("Most", std::uint32_t{0xFFFFFFFF});
    ASSERT_TRUE(written.save());
    EXPECT_EQ(readFile(FILE_PATH), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<EMMC>\n    <Settings>\n"
                                   "        <On>1</On>\n        <Off>0</Off>\n        <Least>-2147483648</Least>\n"
                                   "        <Most>4294967295</Most>\n    </Settings>\n</EMMC>\n");
    SettingsDocument document = subject();
    ASSERT_TRUE(document.open());
    bool on = false;
    bool off = true;
    std::int32_t least = 0;
    std::uint32_t most = 0;
    EXPECT_TRUE(document.read("On", on) && document.read("Off", off));
    EXPECT_TRUE(document.read("Least", least) && document.read("Most", most));
    EXPECT_TRUE(on);
    EXPECT_FALSE(off);
    EXPECT_EQ(least, -2147483647 - 1);
    EXPECT_EQ(most, 0xFFFFFFFF);
}

TEST(SettingsDocument, OpensOnlyWhatHasBothOuterElements) {
    const struct {
        const char* content;
        bool opens;
    } cases[] = {
        {"<EMMC><Settings/></EMMC>", true},
        {"<Other/><EMMC><Other/><Settings/></EMMC>", true},
        {"<EMMC><Settings></EMMC>", false},
        {"<EMMC/>", false},
        {"<Settings/>", false},
        {"<emmc><Settings/></emmc>", false},
        {"<Other><EMMC><Settings/></EMMC></Other>", false},
        {"", false},
    };
    for (const auto& [content, opens] : cases) {
        writeFile(FILE_PATH, content);
        EXPECT_EQ(subject().open(), opens) << content;
    }
    writeFile(FILE_PATH, cases[0].content);
    failCall("CreateFileW");
    EXPECT_FALSE(subject().open());
}

TEST(SettingsDocument, LeavesWhatItCannotReadAsItWas) {
    writeFile(FILE_PATH, "<EMMC><Other><Missing>1</Missing></Other><Settings><Empty/><Word>much</Word>"
                         "<Remark><!--ms-->5</Remark><Yes>true</Yes><Two>2</Two><Nested><Missing>1</Missing></Nested>"
                         "<Twice>1</Twice><Twice>0</Twice></Settings></EMMC>");
    SettingsDocument document = subject();
    bool truth = true;
    std::int32_t number = -5;
    std::uint32_t count = 5;
    EXPECT_FALSE(document.read("Two", number)) << "before it is opened";
    ASSERT_TRUE(document.open());
    for (const char* name : {"Missing", "Empty", "Word", "Remark", "two"}) {
        EXPECT_FALSE(document.read(name, truth)) << name;
        EXPECT_FALSE(document.read(name, number)) << name;
        EXPECT_FALSE(document.read(name, count)) << name;
    }
    EXPECT_TRUE(truth);
    EXPECT_EQ(number, -5);
    EXPECT_EQ(count, 5U);
    bool yes = false;
    bool two = false;
    EXPECT_TRUE(document.read("Yes", yes) && document.read("Two", two) && document.read("Twice", number));
    EXPECT_TRUE(yes && two);
    EXPECT_EQ(number, 1);
}

TEST(SettingsDocument, SaysWhenItCouldNotBeWritten) {
    writeFile(FILE_PATH, "old");
    struct : tinyxml2::XMLDocument {
        bool Accept(tinyxml2::XMLVisitor*) const override {
            throw std::bad_alloc();
        }
    } outOfMemory;
    EXPECT_FALSE(OrvaUtils::Xml::saveDocument(outOfMemory, L"\\Settings\\EMMC.xml"));
    EXPECT_EQ(readFile(FILE_PATH), "old");
    SettingsDocument document = subject();
    document.createEmpty();
    for (int value = 0; value < 10000; ++value) {
        document.write("Value", true);
    }
    failCall("CreateFileW");
    EXPECT_FALSE(document.save());
    EXPECT_EQ(readFile(FILE_PATH), "old");
    failCall("WriteFile");
    EXPECT_FALSE(document.save());
    startTrace();
    EXPECT_TRUE(document.save());
    EXPECT_EQ(trace().size(), 3U) << "opened, written and closed once, however large it is";
    EXPECT_GT(readFile(FILE_PATH).size(), 250000U);
    EXPECT_TRUE(DeleteFileW(L"\\Settings\\EMMC.xml")) << "closed each time";
}
