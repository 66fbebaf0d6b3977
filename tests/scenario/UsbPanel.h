// A panel with a helper in place, and disks whose "Tarvex.xml" it carries out.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

inline std::string command(const std::string& words, bool wait, const std::string& path = "\\Temp\\Actor.exe") {
    return "<Command Type='RunProcess' FilePath='" + path + "' Arguments='" + words + "' WaitCompletion='" +
           (wait ? "1" : "0") + "'/>";
}

inline std::string document(const std::string& commands) {
    return "<?xml version='1.0' encoding='UTF-8'?>\n<Tarvex><Commands>" + commands + "</Commands></Tarvex>\n";
}

inline std::string resultOf(const std::string& call) {
    return call.substr(call.rfind("= ") + 2);
}

class UsbConfiguration : public testing::Test {
protected:
    UsbConfiguration() {
        setUp(panel);
    }

    static void setUp(ScenarioPanel& any) {
        any.install();
        any.put("\\Temp\\Actor.exe", programFile("Actor"));
    }

    panel::Partition partition(const std::string& volume, const std::string& content) const {
        writeText(disks.path / volume / "Tarvex.xml", content);
        return {disks.path / volume, volume};
    }
    // A disk with one mounted partition whose "Tarvex.xml" has this content; its device.
    std::string plug(const std::string& content, std::uint64_t readyAfter = 0,
                     const std::string& volume = "Hard Disk") {
        return panel.panel().plug({{partition(volume, content)}, readyAfter});
    }
    void unplug(const std::string& name) {
        panel.panel().disks().unplug(name);
    }

    void startHelper() {
        panel.startInPlace();
        settledLines = panel.log().size();
    }
    void pass(std::uint64_t milliseconds) {
        panel.pass(milliseconds);
    }
    // Command 1, and the wait for the helper alone; its exit code.
    std::uint32_t endHelper(ScenarioPanel& any) {
        EXPECT_EQ(any.command(1), 0);
        const auto gone = [&] { return !any.isRunning("TarvexHelper.exe#1"); };
        EXPECT_TRUE(any.driver().waitUntil(gone, ScenarioPanel::limit));
        return any.exitCodeOf("TarvexHelper.exe#1");
    }
    // What the helper has logged since it reached its loop.
    Lines logged() const {
        return panel.lastLines(panel.log().size() - settledLines);
    }
    // The programs that have ended: "Actor.exe#1 at 2500: 3".
    Lines ended() {
        Lines lines;
        for (const panel::EndedStatus& each : panel.driver().status().ended)
            if (each.name.find("Actor") == 0)
                lines.push_back(each.name + " at " + std::to_string(each.time) + ": " + std::to_string(each.exitCode));
        return lines;
    }
    // Of the thread that hears of disks: "Sleep(500) = void after 500 ms", those that begin so.
    Lines calls(const std::string& start = {}) {
        const std::uint32_t watcher = panel.calls("ReadMsgQueue").at(0).thread;
        Lines lines;
        for (const TracedCall& call : panel.calls())
            if (call.thread == watcher && call.text.starts_with(start))
                lines.push_back(call.text);
        return lines;
    }

    ScenarioPanel panel;
    const FreshFolder disks;
    std::size_t settledLines = 0;
};
