#include "modules/usbconfig/Configuration.h"
#include "OrvaUtils/Xml/XmlException.h"
#include "modules/usbconfig/ConfigurationException.h"
#include "modules/usbconfig/RunProcessCommand.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;

namespace {

const wchar_t* const PATH = L"\\Hard Disk\\Tarvex.xml";

using Bytes = std::vector<std::uint8_t>;

void writeConfiguration(const std::string& content) {
    writeFile("\\Hard Disk\\Tarvex.xml", content);
}

std::string command(const std::string& attributes) {
    return "<Tarvex><Commands><Command " + attributes + "/></Commands></Tarvex>";
}

// "XmlException: ..." or "ConfigurationException: ..."
std::wstring refusal() {
    try {
        const Configuration configuration(PATH);
    } catch (const OrvaUtils::Xml::XmlException& failure) {
        return L"XmlException: " + failure.message();
    } catch (const ConfigurationException& failure) {
        return L"ConfigurationException: " + failure.message();
    }
    return L"none";
}

} // namespace

TEST(Configuration, ReadsItsSectionsInOrder) {
    writeConfiguration(
        "<?xml version='1.0'?><!-- a comment --><Tarvex><Commands>"
        "<Command Type='RunProcess' FilePath='\\a.exe' Arguments='-x &quot;y z&quot;' WaitCompletion='1'/>"
        "<!-- between --></Commands><Unknown><Command/></Unknown><commands/>"
        "<Login Username='first' Password='01'/>"
        "<Users><User Username='u' Password='0aFF'/><Other Username='\xC3\xA4' Password=''/></Users>"
        "<Login Username='last' Password='6f7'/><Users><User Username='u' Password='02'/></Users>"
        "<Commands><Command WaitCompletion='0' Arguments='' FilePath='' Type='RunProcess' More=''/>"
        "</Commands></Tarvex><Second/>");
    const Configuration configuration(PATH);
    EXPECT_EQ(configuration.filePath, PATH);
    EXPECT_EQ(configuration.sections, (std::set<std::wstring>{L"Commands", L"Login", L"Users"}));
    EXPECT_EQ(configuration.loginUsername, L"last");
    EXPECT_EQ(configuration.loginPassword, Bytes{0x6F}) << "the odd digit counts for nothing";
    EXPECT_EQ(configuration.users, (std::map<std::wstring, Bytes>{{L"u", {2}}, {L"\u00E4", {}}}));
    ASSERT_EQ(configuration.commands.size(), 2U);
    const auto& first = dynamic_cast<const RunProcessCommand&>(*configuration.commands[0]);
    EXPECT_EQ(first.filePath, L"\\a.exe");
    EXPECT_EQ(first.arguments, L"-x \"y z\"");
    EXPECT_TRUE(first.waitCompletion);
    EXPECT_EQ(first.getType(), 0);
    const auto& second = dynamic_cast<const RunProcessCommand&>(*configuration.commands[1]);
    EXPECT_EQ(second.filePath + second.arguments, L"");
    EXPECT_FALSE(second.waitCompletion);
}

TEST(Configuration, TakesPasswordsAsTheScannerDoes) {
    const std::pair<const char*, Bytes> cases[] = {
        {"", {}},
        {"a", {}},
        {"DEadbeef", {0xDE, 0xAD, 0xBE, 0xEF}},
        {"zz10", {0, 0x10}},
        {"\xC5\x81"
         "1",
         {0}}, // U+0141, whose low byte is an "A"
        {"1z 2-1", {1, 2, 0xFF}},
        {"\xE2\x82\xAC"
         "10",
         {0}}, // one character, of which no pair is a number
    };
    for (const auto& [digits, bytes] : cases) {
        writeConfiguration(std::string("<Tarvex><Login Username='' Password='") + digits + "'/></Tarvex>");
        EXPECT_EQ(Configuration(PATH).loginPassword, bytes) << digits;
    }
}

TEST(Configuration, RefusesWhatIsWrong) {
    EXPECT_EQ(refusal(), L"XmlException: Generic Exception") << "no file";
    const std::pair<std::string, const wchar_t*> cases[] = {
        {"", L"XmlException: Generic Exception"},
        {"<!-- nothing else -->", L"XmlException: Generic Exception"},
        {"<Tarvex><Commands></Tarvex>", L"XmlException: Generic Exception"},
        {"<tarvex/>", L"ConfigurationException: Invalid root element"},
        {"<Other/><Tarvex/>", L"ConfigurationException: Invalid root element"},
        {"<Tarvex><Login Username='a'/></Tarvex>", L"XmlException: Generic Exception"},
        {"<Tarvex><Login Password='00'/></Tarvex>", L"XmlException: Generic Exception"},
        {"<Tarvex><Users><User Username='a'/></Users></Tarvex>", L"XmlException: Generic Exception"},
        {"<Tarvex><Users><User Password='00'/></Users></Tarvex>", L"XmlException: Generic Exception"},
        {"<Tarvex><Commands><command/></Commands></Tarvex>", L"ConfigurationException: Expected command"},
        {command(""), L"XmlException: Generic Exception"},
        {command("Type='runProcess'"), L"ConfigurationException: Invalid command type"},
        {command("Type='RunProcess' Arguments='' WaitCompletion='0'"), L"XmlException: Generic Exception"},
        {command("Type='RunProcess' Arguments='' WaitCompletion='bad'"), L"XmlException: Generic Exception"},
        {command("Type='RunProcess' FilePath='a' WaitCompletion='0'"), L"XmlException: Generic Exception"},
        {command("Type='RunProcess' FilePath='a' Arguments=''"), L"XmlException: Generic Exception"},
        {command("Type='RunProcess' FilePath='a' Arguments='' WaitCompletion='true'"),
         L"ConfigurationException: Invalid WaitCompletion attribute"},
        {command("Type='RunProcess' FilePath='a' Arguments='' WaitCompletion=' 1'"),
         L"ConfigurationException: Invalid WaitCompletion attribute"},
    };
    for (const auto& [content, expected] : cases) {
        writeConfiguration(content);
        EXPECT_EQ(refusal(), expected) << content;
    }
}
