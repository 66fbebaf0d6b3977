#include "tests/scenario/SavingPanel.h"

#include "platform/panel/Operator.h"
#include "tests/support/ModuleSettings.h"

using panel::Behaviour;

Words dimmedTo(std::uint32_t level) {
    return {level, 1, level, 1};
}

SavingPanel::SavingPanel() {
    install();
}

SavingPanel::SavingPanel(bool enabled, int timeout, int level) : SavingPanel() {
    configure(enabled, timeout, level);
    startInPlace();
}

void SavingPanel::configure(bool enabled, int timeout, int level) {
    write(saverSettingsPath, saverSettings(enabled, timeout, level));
}

std::optional<std::int64_t> SavingPanel::tell(std::uint64_t command, std::int64_t argument) {
    return send("ORVATarvexScreenSaverMsg", command, argument);
}

std::uint32_t SavingPanel::exitCode() {
    EXPECT_TRUE(driver().waitUntil([this] { return driver().status().processes.empty(); }, limit));
    return exitCodeOf("TarvexHelper.exe#1");
}

void SavingPanel::user(bool active) {
    panel::setUserActive(active);
    driver().settle();
}

void SavingPanel::refuse(const char* operation) {
    panel().devices().setBehaviour("BKL1", {Behaviour::Kind::refuse, 31}, operation);
}

void SavingPanel::obey() {
    panel().devices().setBehaviour("BKL1", {});
}

Words SavingPanel::levels() {
    return driver().status().backLight;
}

std::string SavingPanel::blackWindow() {
    const panel::PanelStatus status = driver().status();
    if (status.screen.cover == "ORVAScreenSaver")
        return status.screen.background;
    for (const panel::WindowStatus& window : status.windows)
        if (window.className == "ORVAScreenSaver")
            return window.visible ? "visible, but not covering" : "hidden";
    return "none";
}

std::int32_t SavingPanel::cursor() {
    return driver().status().screen.cursorCount;
}

Lines SavingPanel::steps(std::uint32_t thread) const {
    Lines found;
    std::string changeEvent;
    for (const TracedCall& call : calls()) {
        if (call.thread != thread)
            continue;
        const std::string& function = call.function;
        const Lines arguments = call.argumentList();
        if (function == "PostMessageW")
            found.push_back("post " + arguments.at(1));
        else if (function == "DeviceIoControl")
            found.push_back(arguments.at(1) == "0x1130408" ? "read" : "write " + arguments.at(2).substr(1, 2));
        else if (function == "CreateEventW" && arguments.back() == "\"BackLightLevelChangeEvent\"")
            changeEvent = call.result;
        else if (!changeEvent.empty() && arguments[0] == changeEvent)
            found.push_back(function == "EventModify" ? "change event set" : "change event closed");
        else if (function == "ShowCursor")
            found.push_back("cursor " + arguments[0]);
        else if (function == "ShowWindow")
            found.push_back("window " + arguments.at(1));
    }
    return found;
}
