#include "tests/scenario/Milestones.h"

#include <algorithm>

namespace {

std::string baseName(const std::string& quoted) {
    const std::string path = quoted.substr(1, quoted.size() - 2);
    return path.substr(path.find_last_of("\\/") + 1);
}

// By the order of the attempts to make them.
const Lines madeEvents{"press",    "hook stop", "EMMC stop",  "EMMC ready", "loop end",
                       "USB stop", "USB ready", "saver stop", "saver ready"};
const Lines startedThreads{"EMMC thread", "saver thread", "buzzer thread", "USB thread"};

class Steps {
public:
    explicit Steps(Lines logLines) : log(std::move(logLines)) {}

    // Empty: the call does not matter.
    std::string of(const TracedCall& call) {
        const std::string& function = call.function;
        const Lines arguments = call.argumentList();
        const std::string& first = arguments[0];
        if (function == "CreateFileW")
            return opened(call);
        if (function == "CreateEventW")
            return arguments.back() == "null" ? named(call, "make ", madeEvents.at(events++)) : "";
        if (function == "CreateThread")
            return named(call, "start ", startedThreads.at(threads++));
        if (function == "CreateMutexW" || function == "OpenEventW" || function == "LoadLibraryW")
            return named(call, function == "LoadLibraryW" ? "load " : "open ", baseName(arguments.back()));
        if (function == "CreateWindowExW")
            return named(call, "make ", "window " + baseName(arguments.at(1))) + ", " + first + ", " + arguments.at(3);
        if (function == "CreateMsgQueue")
            return named(call, "make ", "queue");
        if (function == "RequestDeviceNotifications")
            return named(call, "make ", "notification");
        if (function == "SetWindowsHookExW")
            return named(call, "make ", "hook");
        if (function == "RegisterClassW" || function == "UnregisterClassW")
            return (function[0] == 'R' ? "register " : "unregister ") + baseName(first);
        if (function == "GetMessageW")
            return "take message " + arguments[1];
        if (function == "DeviceIoControl")
            return "ask " + names[first];
        const auto known = names.find(first);
        if (function == "WaitForMultipleObjects")
            return "await " + names[arguments[1]] + " or " + names[arguments[2]];
        if (known == names.end())
            return {};
        if (function == "WriteFile")
            return known->second == logName ? "log " + nextLogLine() : "";
        if (function == "EventModify")
            return (arguments[1] == "3" ? "set " : "reset ") + known->second;
        if (function == "WaitForSingleObject")
            return (known->second.ends_with("thread") ? "join " : "await ") + known->second +
                   (call.result == "258" ? " in vain" : "");
        if (function == "ReleaseMutex")
            return "release " + known->second;
        if (function == "PostMessageW")
            return "post " + arguments[1] + " to " + known->second;
        static const Lines ends{"CloseHandle",   "FreeLibrary",   "UnhookWindowsHookEx",
                                "DestroyWindow", "CloseMsgQueue", "StopDeviceNotifications"};
        if (std::find(ends.begin(), ends.end(), function) == ends.end())
            return {};
        const std::string step = "close " + known->second;
        names.erase(known);
        return step;
    }

private:
    static constexpr const char* logName = "log";

    std::string named(const TracedCall& call, const char* verb, const std::string& name) {
        names[call.result] = name;
        return verb + name;
    }

    std::string opened(const TracedCall& call) {
        const Lines arguments = call.argumentList();
        const std::string name = baseName(arguments[0]);
        const bool reads = arguments[1] == "0x80000000";
        if (name.find("helper_log") == 0)
            return reads ? "" : named(call, "open ", logName);
        if (name.back() == ':')
            return named(call, "open ", name) + call.arguments.substr(arguments[0].size() + 1);
        return (reads ? "read " : "write ") + name;
    }

    std::string nextLogLine() {
        const std::string& line = log.at(logged++);
        return line.substr(line.find(';') + 1);
    }

    Lines log;
    std::size_t logged = 0;
    std::size_t events = 0;
    std::size_t threads = 0;
    std::map<std::string, std::string> names; // by handle
};

} // namespace

Lines milestones(const ScenarioPanel& panel, std::uint32_t thread) {
    Lines found;
    Steps steps(panel.log());
    for (const TracedCall& call : panel.calls()) {
        if (call.process != 1)
            continue;
        const std::string step = steps.of(call);
        if (!step.empty() && call.thread == thread)
            found.push_back(call.failed ? step + " failed" : step);
    }
    return found;
}
