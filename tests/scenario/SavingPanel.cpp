#include "tests/scenario/SavingPanel.h"

#include "platform/panel/Client.h"
#include "platform/panel/Operator.h"

using panel::Behaviour;

namespace {

std::string between(const std::string& text, const std::string& first, const std::string& last) {
    const auto begin = text.find(first) + first.size();
    return text.substr(begin, text.find(last, begin) - begin);
}

} // namespace

Words dimmedTo(std::uint32_t level) {
    return {level, 1, level, 1};
}

SavingPanel::SavingPanel() {
    install();
}

SavingPanel::SavingPanel(bool enabled, int timeout, int level) : SavingPanel() {
    configure(enabled, timeout, level);
    begin();
}

void SavingPanel::configure(bool enabled, int timeout, int level) {
    write("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml",
          "<ScreenSaver><Settings><Enabled>" + std::to_string(enabled) + "</Enabled><UserInactivityTimeout>" +
              std::to_string(timeout) + "</UserInactivityTimeout><MinLuminosityLevel>" + std::to_string(level) +
              "</MinLuminosityLevel></Settings></ScreenSaver>");
}

void SavingPanel::begin() {
    driver().start(helper);
    EXPECT_TRUE(reachesLoop());
    driver().settle();
}

std::optional<std::int64_t> SavingPanel::tell(std::uint64_t command, std::int64_t argument) {
    return panel::sendMessage(panel::findWindow("ORVATarvexHelper"), "ORVATarvexScreenSaverMsg", command, argument,
                              limit);
}

std::uint32_t SavingPanel::exitCode() {
    EXPECT_TRUE(driver().waitUntil([this] { return driver().status().processes.empty(); }, limit));
    return exitCodeOf("TarvexHelper.exe#1");
}

void SavingPanel::user(bool active) {
    panel::setUserActive(active);
    driver().settle();
}

void SavingPanel::pass(std::uint64_t milliseconds) {
    driver().advance(milliseconds);
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

Lines SavingPanel::steps(const std::string& thread) const {
    Lines found;
    std::string changeEvent;
    for (const std::string& line : trace()) {
        if (line.find(" TarvexHelper.exe#1 " + thread + ' ') == std::string::npos)
            continue;
        const auto is = [&](const char* function) { return line.find(std::string(" ") + function + "[") != line.npos; };
        if (is("PostMessageW"))
            found.push_back("post " + between(line, ", ", ","));
        else if (is("DeviceIoControl"))
            found.push_back(line.find("0x1130408") != line.npos ? "read" : "write " + between(line, "c, {", " "));
        else if (is("CreateEventW") && line.find("\"BackLightLevelChangeEvent\"") != line.npos)
            changeEvent = between(line, ") = ", " ");
        else if (!changeEvent.empty() && line.find('(' + changeEvent) != line.npos)
            found.push_back(is("EventModify") ? "change event set" : "change event closed");
        else if (is("ShowCursor"))
            found.push_back("cursor " + between(line, "(", ")"));
        else if (is("ShowWindow"))
            found.push_back("window " + between(line, ", ", ")"));
    }
    return found;
}
