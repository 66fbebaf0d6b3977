// A panel with a helper in place, and disks whose "Tarvex.xml" it carries out.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

inline std::string command(const std::string& words, bool wait, const std::string& path = "\\Temp\\Actor.exe") {
    return "<Command Type='RunProcess' FilePath='" + path + "' Arguments='" + words + "' WaitCompletion='" +
           (wait ? "1" : "0") + "'/>";
}

inline std::string document(const std::string& commands) {
    return "<?xml version='1.0' encoding='UTF-8'?>\n<Tarvex><Commands>" + commands + "</Commands></Tarvex>\n";
}

// "      1000 TarvexHelper.exe#1 t2 Sleep[1](500) = void after 500 ms" -> "Sleep(500) = void after 500 ms"
inline std::string callOf(const std::string& line) {
    const auto open = line.find('[');
    const auto name = line.rfind(' ', open) + 1;
    return line.substr(name, open - name) + line.substr(line.find(']') + 1);
}

// " t2 ": the helper's thread that hears of devices, by a call that only it makes
inline std::string watcherIn(const Lines& trace, const std::string& call) {
    for (const std::string& line : trace) {
        const auto name = line.find(" " + call + "[");
        if (name != std::string::npos)
            return line.substr(line.rfind(" t", name), name - line.rfind(" t", name) + 1);
    }
    return "none";
}

inline std::string resultOf(const std::string& call) {
    return call.substr(call.rfind("= ") + 2);
}

class UsbConfiguration : public testing::Test {
protected:
    UsbConfiguration() {
        std::string name = (fs::temp_directory_path() / "disk-XXXXXX").string();
        folder = mkdtemp(name.data());
        setUp(panel);
    }
    ~UsbConfiguration() override {
        fs::remove_all(folder);
    }

    static void setUp(ScenarioPanel& any) {
        any.install();
        any.put("\\Temp\\Actor.exe", programFile("Actor"));
    }

    panel::Partition partition(const std::string& volume, const std::string& content) const {
        const fs::path place = folder / volume;
        fs::create_directories(place);
        std::ofstream(place / "Tarvex.xml") << content;
        return {place, volume};
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
        panel.driver().start(ScenarioPanel::helper);
        ASSERT_TRUE(panel.reachesLoop());
        settledLines = panel.log().size();
    }
    void pass(std::uint64_t milliseconds) {
        panel.driver().advance(milliseconds);
        panel.driver().settle();
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
    Lines calls(const std::string& start = {}) {
        const Lines trace = panel.trace();
        const std::string watcher = watcherIn(trace, "ReadMsgQueue");
        Lines lines;
        for (const std::string& line : trace)
            if (line.find(watcher) != std::string::npos && callOf(line).find(start) == 0)
                lines.push_back(callOf(line));
        return lines;
    }

    ScenarioPanel panel;
    fs::path folder;
    std::size_t settledLines = 0;
};
