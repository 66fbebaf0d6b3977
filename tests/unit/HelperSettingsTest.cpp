#include "app/HelperSettings.h"
#include "tests/support/SettingsFile.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;

namespace {

// A restore without components.
std::string savedRestore(const std::string& attributes) {
    return "    <Restore " + attributes + ">\n        <Components/>\n    </Restore>\n";
}

const std::string PLAIN = R"(InProgress="1" RepositoryPath="\a.osr" Force="0")";

} // namespace

TEST(HelperSettings, ReadsAndSavesEveryRule) {
    const std::string complete =
        settingsFile(3, {"\\Hard Disk", "\\M\xC3\xBCll &amp; &lt;&quot;Rest&quot;&gt;"},
                     "    <Restore InProgress=\"1\" RepositoryPath=\"\\Hard Disk\\\xE2\x82\xAC.osr\" Force=\"1\" "
                     "IgnoreTarvexCpl=\"0\" DeleteOsrAfterRestore=\"1\">\n        <Components>\n"
                     "            <Component Name=\"first\"/>\n            <Component Name=\"\xC3\xA4\"/>\n"
                     "        </Components>\n    </Restore>\n" +
                         savedRestore(PLAIN));
    const auto withRestore = [](const std::string& restores) {
        return "<OrvaTarvex><Settings><Parameters LogLevel='1'/></Settings>" + restores + "</OrvaTarvex>";
    };
    const auto restore = [&](const std::string& attributes) {
        return withRestore("<Restore " + attributes + "><Components/></Restore>");
    };
    const struct {
        const char* rule;
        std::string document;
        std::string saved;
    } cases[] = {
        {"a saved document is read back", complete, complete},
        {"settings after the restores",
         "<OrvaTarvex><Restore/><Settings><Parameters LogLevel='4'/></Settings></OrvaTarvex>", settingsFile(4)},
        {"no parameters", "<OrvaTarvex><Settings/></OrvaTarvex>", settingsFile(0)},
        {"no settings", "<OrvaTarvex/>", settingsFile(0)},
        {"no level", "<OrvaTarvex><Settings><Parameters/></Settings></OrvaTarvex>", settingsFile(2)},
        {"no number", "<OrvaTarvex><Settings><Parameters LogLevel='much'/></Settings></OrvaTarvex>", settingsFile(2)},
        {"below zero", "<OrvaTarvex><Settings><Parameters LogLevel='-1'/></Settings></OrvaTarvex>", settingsFile(-1)},
        {"another root", "<orvatarvex><Settings><Parameters LogLevel='1'/></Settings></orvatarvex>", settingsFile(0)},
        {"a second root", "<Other/><OrvaTarvex><Settings><Parameters LogLevel='1'/></Settings></OrvaTarvex>",
         settingsFile(1)},
        {"broken off",
         "<OrvaTarvex><Settings><Parameters LogLevel='1'/><CleanupDirectories><Directory Name='\\a'/></Settings>",
         settingsFile(0)},
        {"broken after the root", "<OrvaTarvex><Settings><Parameters LogLevel='1'/></Settings></OrvaTarvex><",
         settingsFile(0)},
        {"an empty directory name",
         "<OrvaTarvex><Settings><CleanupDirectories><Directory Name=''/></CleanupDirectories></Settings></OrvaTarvex>",
         settingsFile(0, {""})},
        {"text that is no UTF-8",
         "<OrvaTarvex><Settings><CleanupDirectories><Directory Name='a\xFFz'/></CleanupDirectories></Settings>"
         "</OrvaTarvex>",
         settingsFile(0, {"a\xEF\xBF\xBDz"})},
        {"in progress: a word", restore("InProgress='true' RepositoryPath='\\a.osr'"),
         settingsFile(1, {}, savedRestore(PLAIN))},
        {"not in progress", restore("InProgress='0' RepositoryPath='\\a.osr'"), settingsFile(1)},
        {"in progress not said", restore("RepositoryPath='\\a.osr'"), settingsFile(1)},
        {"no repository", restore("InProgress='1'"), settingsFile(1)},
        {"an empty repository", restore("InProgress='1' RepositoryPath=''"),
         settingsFile(1, {}, "    <Restore InProgress=\"1\"/>\n")},
        {"no components", withRestore("<Restore InProgress='1' RepositoryPath='\\a.osr'/>"), settingsFile(1)},
        {"in progress as the one before",
         withRestore("<Restore InProgress='1'/><Restore RepositoryPath='\\a.osr'><Components/></Restore>"
                     "<Restore InProgress='0'/><Restore RepositoryPath='\\b.osr'><Components/></Restore>"),
         settingsFile(1, {}, savedRestore(PLAIN))},
        {"in progress as the one before, since it is no truth value",
         withRestore("<Restore InProgress='1'/>"
                     "<Restore InProgress='maybe' RepositoryPath='\\a.osr'><Components/></Restore>"),
         settingsFile(1, {}, savedRestore(PLAIN))},
        {"the lenient flag", restore("InProgress='1' RepositoryPath='\\a.osr' Force='true'"),
         settingsFile(1, {}, savedRestore(R"(InProgress="1" RepositoryPath="\a.osr" Force="1")"))},
        {"the strict flags, by words",
         restore("InProgress='1' RepositoryPath='\\a.osr' IgnoreTarvexCpl='true' DeleteOsrAfterRestore='true'"),
         settingsFile(1, {}, savedRestore(PLAIN + " IgnoreTarvexCpl=\"0\""))},
        {"the strict flags, defaults said",
         restore("InProgress='1' RepositoryPath='\\a.osr' IgnoreTarvexCpl='1' DeleteOsrAfterRestore='0'"),
         settingsFile(1, {}, savedRestore(PLAIN))},
        {"a component without a name",
         withRestore("<Restore InProgress='1' RepositoryPath='\\a.osr'><Components><Component Name='one'/><Component/>"
                     "<Component Name='three'/></Components></Restore>"),
         settingsFile(1, {},
                      "    <Restore " + PLAIN +
                          ">\n        <Components>\n            <Component Name=\"one\"/>\n        </Components>\n"
                          "    </Restore>\n")},
    };
    for (const auto& [rule, document, expected] : cases) {
        writeFile(settingsPath, document);
        HelperSettings().save();
        EXPECT_EQ(readFile(settingsPath), expected) << rule;
    }
}

TEST(HelperSettings, SavesOnlyTheStateOfARestoreNotInProgress) {
    writeFile("\\MMCMemory\\Tarvex\\unrelated", "");
    HelperSettings settings;
    settings.restoreRequests.resize(2);
    settings.restoreRequests[0].repositoryPath = L"\\done.osr";
    settings.restoreRequests[0].components = {L"one"};
    EXPECT_EQ(settings.requestInProgress(), nullptr);
    settings.restoreRequests[1].inProgress = true;
    EXPECT_EQ(settings.requestInProgress(), &settings.restoreRequests[1]);
    settings.save();
    EXPECT_EQ(readFile(settingsPath),
              settingsFile(2, {}, "    <Restore InProgress=\"0\"/>\n    <Restore InProgress=\"1\"/>\n"));
}

TEST(HelperSettings, ReportsNoFailure) {
    writeFile(settingsPath, settingsFile(7, {"\\kept"}));
    failCall("CreateFileW");
    HelperSettings unreadable;
    EXPECT_EQ(unreadable.logLevel, 0);
    failCall("CreateFileW");
    unreadable.save();
    EXPECT_EQ(readFile(settingsPath), settingsFile(7, {"\\kept"}));
}
