// The helper's autorun and the application's file association: what a start finds and writes in the registry.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <functional>

using panel::registry::Copy;
using RegistryTree = panel::registry::Tree;

namespace {

constexpr const char* init = "HKEY_LOCAL_MACHINE\\init";
constexpr const char* extension = "HKEY_CLASSES_ROOT\\.osr";
constexpr const char* openCommand = "HKEY_CLASSES_ROOT\\osrfile\\shell\\open\\command";
constexpr const char* autorunLine = "INFO;Configuring my autorun";
constexpr const char* associationLine = "INFO;Associate .osr file to Tarvex.exe";

using Values = std::map<std::string, std::string>;

const Values complete{
    {"HKEY_CLASSES_ROOT\\osrfile|", "REG_SZ Orva Software Repository"},
    {"HKEY_CLASSES_ROOT\\osrfile\\DefaultIcon|", R"(REG_SZ \MMCMemory\Tarvex\Tarvex.exe,-128)"},
    {"HKEY_CLASSES_ROOT\\osrfile\\shell\\open\\command|", R"(REG_SZ "\MMCMemory\Tarvex\Tarvex.exe" "%1")"},
    {"HKEY_CLASSES_ROOT\\.osr|", "REG_SZ osrfile"},
    {"HKEY_CLASSES_ROOT\\.osr\\ShellNew|NullFile", "REG_SZ "},
    {"HKEY_LOCAL_MACHINE\\init|Launch61", R"(REG_SZ \MMCMemory\Tarvex\TarvexHelper.exe)"},
    {"HKEY_LOCAL_MACHINE\\init|Depend61", "REG_BINARY 32 00"},
    {"HKEY_LOCAL_MACHINE\\ORVA|Version", "REG_SZ 2.15"}, // of every new panel
    {"HKEY_LOCAL_MACHINE\\Ident|Name", "REG_SZ Panel"},
};

// What a helper did to the registry, in order: "set init Launch61", "flush HKEY_LOCAL_MACHINE", "close init".
Lines changes(ScenarioPanel& panel) {
    std::map<std::string, std::string> made; // handle to path
    Lines steps;
    for (const TracedCall& call : panel.calls()) {
        const std::string handle = call.argumentList()[0];
        const std::string text = call.firstText();
        if (call.function == "RegCreateKeyExW") {
            made[call.argumentList().back()] = text;
            steps.push_back("open " + handle + ' ' + text);
        } else if (call.function == "RegSetValueExW") {
            steps.push_back("set " + made[handle] + ' ' + text);
        } else if (call.function == "RegFlushKey") {
            steps.push_back("flush " + handle);
        } else if (call.function == "RegCloseKey" && made.contains(handle)) {
            steps.push_back("close " + made[handle]);
            made.erase(handle);
        } else if (call.function == "CreateFileW" && call.arguments.find("config.xml\", 0x4") != std::string::npos) {
            steps.push_back("save settings");
        }
    }
    return steps;
}

const Lines autorunSteps{"open HKEY_LOCAL_MACHINE init", "set init Launch61", "set init Depend61",
                         "flush HKEY_LOCAL_MACHINE", "close init"};

Lines associationSteps() {
    Lines steps;
    for (const char* key :
         {"osrfile", "osrfile\\DefaultIcon", "osrfile\\shell\\open\\command", ".osr", ".osr\\ShellNew"}) {
        steps.push_back(std::string("open HKEY_CLASSES_ROOT ") + key);
        steps.push_back(std::string("set ") + key + (key == std::string(".osr\\ShellNew") ? " NullFile" : " "));
        steps.push_back(std::string("close ") + key);
    }
    steps.push_back("flush HKEY_CLASSES_ROOT");
    return steps;
}

} // namespace

TEST(Registration, OfAFreshPanelIsOrderedFlushedAndStartsTheHelperAfterAPowerCut) {
    ScenarioPanel panel;
    panel.plugDisk("Hard Disk");
    panel.driver().setTracing(true);
    EXPECT_EQ(panel.run("\\Hard Disk\\Tarvex\\TarvexHelper.exe"), 0U);
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(changes(panel), joined({{"save settings"}, autorunSteps, associationSteps(), {"save settings"}}));
    EXPECT_EQ(panel.registry(), complete);
    EXPECT_EQ(panel.registry(Copy::flash), complete);
    panel.panel().cut();
    panel.reboot();
    EXPECT_EQ(panel.registry(), complete);
    panel.driver().setTracing(true);
    const auto starts = panel.driver().startInit();
    ASSERT_EQ(starts.size(), 1U);
    EXPECT_EQ(starts[0].path, ScenarioPanel::helper);
    EXPECT_EQ(panel.driver().status().processes.at(0).commandLine, "61"); // which the helper does not look at
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(changes(panel), Lines{"save settings"});
    EXPECT_EQ(panel.lastLines(3), ScenarioPanel::managerLines());
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(Registration, IsRenewedWhereTheCheckMissesSomethingAndOnlyThere) {
    const auto set = [](const char* key, const char* name, const char* text) {
        return [=](RegistryTree& tree) { tree.make(key)->set(panel::registry::textValue(name, text)); };
    };
    const auto remove = [](const char* key, const char* name) {
        return [=](RegistryTree& tree) { tree.make(key)->values.remove(name); };
    };
    const auto removeKey = [](const char* key) { return [=](RegistryTree& tree) { tree.remove(key); }; };
    const struct {
        const char* what;
        std::function<void(RegistryTree&)> change;
        bool autorun; // is written again
        bool association;
    } cases[] = {
        {"nothing", [](RegistryTree&) {}, false, false},
        {"the case of the path", set(init, "Launch61", R"(\mmcmemory\TARVEX\tarvexhelper.EXE)"), false, false},
        {"any order", set(init, "Depend61", "whatever"), false, false},
        {"another program", set(init, "Launch61", R"(\Windows\Other.exe)"), true, false},
        {"a longer path", set(init, "Launch61", R"(\MMCMemory\Tarvex\TarvexHelper.exe2)"), true, false},
        {"no program", remove(init, "Launch61"), true, false},
        {"no order", remove(init, "Depend61"), true, false},
        {"no list", removeKey(init), true, false},
        {"another class", set(extension, "", "otherfile"), false, true},
        {"the class's case", set(extension, "", "OSRfile"), false, true},
        {"a class of more than 50 characters",
         set(extension, "", "osrfile and so on, which is not the name of this class any more"), false, true},
        {"no class", remove(extension, ""), false, true},
        {"no extension", removeKey(extension), false, true},
        {"the command's case", set(openCommand, "", R"("\MMCMemory\Tarvex\tarvex.exe" "%1")"), false, true},
        {"no command", remove(openCommand, ""), false, true},
        {"no class's key", removeKey("HKEY_CLASSES_ROOT\\osrfile"), false, true},
        {"no icon", removeKey("HKEY_CLASSES_ROOT\\osrfile\\DefaultIcon"), false, false},
        {"no new file", removeKey("HKEY_CLASSES_ROOT\\.osr\\ShellNew"), false, false},
    };
    ScenarioPanel panel;
    panel.install();
    panel.startInPlace();
    EXPECT_EQ(panel.terminate(), 0U);
    const RegistryTree configured = panel.panel().registry(Copy::now);
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        panel.panel().changeRegistry(
            [&](RegistryTree& tree) {
                tree = configured;
                each.change(tree);
            },
            false);
        const Values changed = panel.registry();
        panel.reboot();
        const std::size_t former = panel.log().size();
        panel.driver().setTracing(true);
        panel.startInPlace();
        EXPECT_EQ(changes(panel), joined({each.autorun ? autorunSteps : Lines(),
                                          each.association ? associationSteps() : Lines(),
                                          {"save settings"}}));
        EXPECT_EQ(panel.registry(), each.autorun || each.association ? complete : changed);
        Lines expected{"INFO;Init of Helper"};
        if (each.autorun)
            expected.push_back(autorunLine);
        if (each.association)
            expected.push_back(associationLine);
        expected = joined({expected, ScenarioPanel::managerLines()});
        EXPECT_EQ(panel.lastLines(panel.log().size() - former), expected);
        EXPECT_EQ(panel.terminate(), 0U);
    }
}

TEST(Registration, OfAnotherTypeEndsTheStart) {
    const auto number = [](const char* key, const char* name) {
        return [=](RegistryTree& tree) { tree.make(key)->set(panel::registry::numberValue(name, 61)); };
    };
    const struct {
        std::function<void(RegistryTree&)> change;
        const char* failure;
        Lines before;
    } cases[] = {
        {number(init, "Launch61"), "", {autorunLine}}, // the order is missing, so nobody looks at it
        {[&](RegistryTree& tree) {
             number(init, "Launch61")(tree);
             number(init, "Depend61")(tree);
         },
         "Unexpected value type",
         {}},
        {number(extension, ""), "Unexpected value type", {autorunLine}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.failure);
        ScenarioPanel panel;
        panel.install();
        panel.panel().changeRegistry(each.change, false);
        panel.driver().start(ScenarioPanel::helper);
        EXPECT_EQ(panel.settlesInLoop(), each.failure == std::string());
        Lines expected = joined({{"INFO;Init of Helper"}, each.before});
        if (each.failure != std::string()) {
            expected.push_back(std::string("ERROR;Exception OrvaUtils::Registry::RegistryException: ") + each.failure);
            EXPECT_EQ(panel.exitCodeOf("TarvexHelper.exe#1"), 1U);
            EXPECT_FALSE(panel.exists("\\MMCMemory\\Tarvex\\config.xml")); // the steps behind it are not reached
            EXPECT_EQ(panel.log(), expected);
        } else {
            EXPECT_EQ(panel.errors(), Lines{});
        }
    }
}
