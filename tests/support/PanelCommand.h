// The panel command, as a person or a script uses it, on a panel "p" in a folder of its own.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace fs = std::filesystem;
using Json = nlohmann::json;

struct Answer {
    int code;
    std::string text; // both streams
};

class PanelCommand : public testing::Test {
protected:
    ~PanelCommand() override {
        call("off");
    }

    Answer call(const std::string& words) {
        const std::string command = "cd '" + directory.string() + "' && " + before + " '" +
                                    programFile("panel").string() + "' -C p " + words + " 2>&1 </dev/null";
        std::FILE* pipe = popen(command.c_str(), "r");
        Answer answer{-1, {}};
        for (int character; (character = std::fgetc(pipe)) != EOF;)
            answer.text += static_cast<char>(character);
        const int status = pclose(pipe);
        answer.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return answer;
    }
    // With one line that says so.
    void fails(const std::string& words, const std::string& part, int code = 1) {
        const Answer answer = call(words);
        EXPECT_EQ(answer.code, code) << words;
        EXPECT_NE(answer.text.find(part), std::string::npos) << words << ": " << answer.text;
        EXPECT_EQ(std::count(answer.text.begin(), answer.text.end(), '\n'), 1) << words << ": " << answer.text;
    }
    void isMisused(const std::string& words, const std::string& part) {
        fails(words, part, 2);
    }
    void succeed(const std::string& words) {
        const Answer answer = call(words);
        EXPECT_EQ(answer.code, 0) << words << ": " << answer.text;
    }
    Json json(const std::string& words) {
        const Answer answer = call(words + " --json");
        EXPECT_EQ(answer.code, 0) << words << ": " << answer.text;
        return Json::parse(answer.text, nullptr, false);
    }
    void install() {
        const fs::path place = directory / "p/fs/MMCMemory/Tarvex";
        fs::create_directories(place);
        fs::copy_file(helperFile(), place / "TarvexHelper.exe");
        fs::copy_file(programFile("Actor"), directory / "p/fs/MMCMemory/Actor.exe");
    }

    const FreshFolder folder;
    const fs::path& directory = folder.path;
    std::string before; // what the shell does before the command
};
