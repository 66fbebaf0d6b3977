#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/HelperLog.h"
#include "platform/tool/ProcessName.h"
#include "platform/tool/Progress.h"
#include "platform/tool/RequestText.h"
#include "platform/tool/StatusJson.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include "platform/panel/Client.h"
#include "platform/panel/DidYouMean.h"
#include "platform/panel/Hex.h"
#include "platform/panel/Paths.h"
#include "platform/panel/Text.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>

namespace tool {

namespace {

namespace fs = std::filesystem;
using panel::Json;

struct WaitOptions {
    std::string window;
    std::string process;
    std::string file;
    std::string logged;
    std::string shown;
    std::vector<std::string> values; // device, words
    std::vector<std::string> request; // device, operation
    std::vector<std::string> status; // field, value
    bool json = false;
    std::string limit = "1min";
};

// What has happened.
struct Event {
    Json json;
    std::string text; // for people; empty: nothing is printed
};

// An event to wait for.
struct Awaited {
    std::function<std::optional<Event>()> look;
    std::string missing; // says that it has not happened
};

// Returns the program of "TarvexHelper.exe#2". A word without a number that starts can have is a program's name.
std::string programOf(const std::string& process) {
    const std::size_t hash = std::min(process.rfind('#'), process.size());
    std::uint32_t start = 0;
    const bool numbered = hash < process.size() && panel::numberIn(process.substr(hash + 1), start) && start > 0;
    return process.substr(0, numbered ? hash : process.size());
}

// Returns whether the panel has a file of this name. `wait --exit` accepts a program that was not started yet, but not
// a mistyped name. The search follows no links except disks that were plugged in place.
bool hasFile(const panel::Panel& panel, const std::string& process) {
    const std::string name = programOf(process);
    const auto isIt = [&](const fs::directory_entry& entry) {
        return panel::equalCaseBlind(entry.path().filename().string(), name);
    };
    constexpr auto options = fs::directory_options::skip_permission_denied;
    for (const fs::directory_entry& top : fs::directory_iterator(panel.directory() / "fs"))
        if (isIt(top) || (top.is_directory() && std::any_of(fs::recursive_directory_iterator(top.path(), options),
                                                            fs::recursive_directory_iterator(), isIt)))
            return true;
    return false;
}

// The end of the latest start of the program. While a start of it runs, it has not ended.
Awaited exitOf(const panel::Panel& panel, panel::Driver& driver, const std::string& wanted) {
    const auto meant = [wanted](const auto& process) { return namesProcess(wanted, process.name); };
    const panel::PanelStatus now = driver.status();
    if (std::none_of(now.processes.begin(), now.processes.end(), meant) &&
        std::none_of(now.ended.begin(), now.ended.end(), meant) && !hasFile(panel, wanted))
        throw Misuse("the panel has no program \"" + wanted + "\" (panel ps --all lists those that were started)");
    const auto look = [&driver, meant]() -> std::optional<Event> {
        const panel::PanelStatus status = driver.status();
        const auto ended = std::find_if(status.ended.rbegin(), status.ended.rend(), meant);
        if (ended == status.ended.rend() || std::any_of(status.processes.begin(), status.processes.end(), meant))
            return std::nullopt;
        const std::string code = toned(std::to_string(ended->exitCode), ended->exitCode ? Tone::bad : Tone::good);
        return Event{{{"name", ended->name}, {"exitCode", ended->exitCode}, {"time", ended->time}},
                     ended->name + " ended with exit code " + code};
    };
    return {look, wanted + " has not ended"};
}

Awaited windowOf(const std::string& name) {
    const auto look = [name] {
        return panel::findWindow(name) ? std::optional<Event>({{{"window", name}}, ""}) : std::nullopt;
    };
    return {look, "there is no window " + name};
}

Awaited fileAt(const panel::Panel& panel, const std::string& path) {
    const std::string root = panel.directory().string();
    if (const panel::Place place = panel::locate(root, path); !place.exists && place.error == 123)
        throw Misuse("that is not a panel path: \"" + path + "\" (such as \\MMCMemory\\Tarvex\\config.xml)");
    const auto look = [root, path]() -> std::optional<Event> {
        const panel::Place place = panel::locate(root, path);
        if (!place.exists)
            return std::nullopt;
        return Event{{{"file", path}, {"folder", place.isDirectory()}}, ""};
    };
    return {look, "there is no file " + path};
}

Awaited lineOf(const panel::Panel& panel, const std::string& text) {
    const auto log = std::make_shared<HelperLog>(panel);
    const auto look = [log, text]() -> std::optional<Event> {
        for (const std::string& line : log->newLines())
            if (line.find(text) != std::string::npos)
                return Event{{{"line", line}}, line};
        return std::nullopt;
    };
    return {look, "the log does not say \"" + text + '"'};
}

Awaited sight(panel::Driver& driver, const std::string& wanted) {
    const auto look = [&driver, wanted]() -> std::optional<Event> {
        const panel::ScreenStatus screen = driver.status().screen;
        const bool bare = screen.cover.empty();
        if (wanted == "nothing" ? !bare
                                : bare || (!panel::equalCaseBlind(wanted, screen.cover) && wanted != screen.background))
            return std::nullopt;
        return Event{{{"cover", bare ? Json(nullptr) : Json(screen.cover)},
                      {"process", screen.process},
                      {"background", screen.background}},
                     ""};
    };
    return {look, "the screen does not show " + wanted};
}

// The bytes of a tag.
Awaited tagOf(const panel::Panel& panel, std::span<const std::string> words) {
    std::uint32_t id = 0;
    std::string bytes;
    if (words.size() < 2 || !panel::numberIn(words.front(), id))
        throw Misuse("name a tag and its bytes in hexadecimal, such as tags 18 02 04 (panel tag list)");
    for (const std::string& word : words.subspan(1))
        bytes += orMisuse([&] { return panel::parseHex(word); });
    const auto look = [&panel, id, bytes]() -> std::optional<Event> {
        if (panel.devices().tag(id) != bytes)
            return std::nullopt;
        return Event{{{"device", "tags"}, {"tag", id}, {"bytes", panel::hexLine(bytes)}}, ""};
    };
    return {look, "the tag " + std::to_string(id) + " does not have the bytes " + panel::hexLine(bytes)};
}

// The backlight's values are the record that its driver holds now, not the record at boot.
Awaited valuesOf(const panel::Panel& panel, panel::Driver& driver, const std::vector<std::string>& words) {
    const panel::DeviceFacts& device = *orMisuse([&] { return &panel::Devices::facts(words.front()); });
    if (device.name == "tags")
        return tagOf(panel, std::span(words).subspan(1));
    if (words.size() < 2 || words.size() - 1 > device.values.size())
        throw Misuse("name a device and its first values: " + std::string(device.name) + " has " +
                     std::to_string(device.values.size()) + " values");
    std::vector<std::uint32_t> wanted;
    std::string text;
    for (const std::string& word : std::span(words).subspan(1)) {
        text += ' ' + word;
        wanted.push_back(parseValue(word));
    }
    const auto look = [&panel, &driver, &device, wanted]() -> std::optional<Event> {
        const std::vector<std::uint32_t> values =
            device.name == "BKL1" ? driver.status().backLight : panel.devices().state(device.name).values;
        if (!std::equal(wanted.begin(), wanted.end(), values.begin()))
            return std::nullopt;
        return Event{{{"device", device.name}, {"values", values}}, ""};
    };
    return {look, "the values of " + std::string(device.name) + " are not" + text};
}

// The first request after this one has begun to wait.
Awaited requestTo(const panel::Panel& panel, const std::vector<std::string>& words) {
    const std::string device = words.front() == "any" ? "" : words.front();
    const std::string operation = words.size() > 1 ? words.back() : "";
    if (!device.empty())
        orMisuse([&] { panel::Devices::check(device, {}, operation); });
    const auto has = [&](const panel::DeviceFacts& each) {
        return std::any_of(each.operations.begin(), each.operations.end(),
                           [&](const panel::OperationFacts& known) { return known.name == operation; });
    };
    if (!operation.empty() && operation != "open" &&
        std::none_of(panel::knownDevices().begin(), panel::knownDevices().end(), has))
        throw Misuse("no device has the operation \"" + operation + '"');
    const std::size_t known = panel.devices().requests(device).size();
    const auto look = [&panel, device, operation, known]() -> std::optional<Event> {
        const std::vector<panel::Request> requests = panel.devices().requests(device);
        for (std::size_t index = known; index < requests.size(); ++index) {
            const panel::Request& request = requests[index];
            if (operation.empty() || request.operation == operation)
                return Event{requestJson(request), request.device + ' ' + requestText(request)};
        }
        return std::nullopt;
    };
    return {look, "no program has sent a request"};
}

// Returns the field "screen.background" or "backLight.0" of a status, or null.
const Json* fieldOf(const Json& status, const std::string& field) {
    const std::size_t dot = std::min(field.find('.'), field.size());
    const std::string name = field.substr(0, dot);
    std::uint32_t index = 0;
    const Json* found = nullptr;
    if (status.is_object() && status.contains(name))
        found = &status[name];
    else if (status.is_array() && panel::numberIn(name, index) && index < status.size())
        found = &status[index];
    return found && dot < field.size() ? fieldOf(*found, field.substr(dot + 1)) : found;
}

// Throws Misuse if the status can never have this field. Items of lists, events below "signals" and parts of a field
// that is null may come later.
void checkField(const Json& status, const std::string& field, const Json& value) {
    const Json* part = &status;
    for (std::size_t begin = 0; begin <= field.size();) {
        const std::size_t end = std::min(field.find('.', begin), field.size());
        const std::string name = field.substr(begin, end - begin);
        begin = end + 1;
        std::uint32_t index = 0;
        if (part->is_null() || part == &status["signals"])
            return;
        if (part->is_array() && panel::numberIn(name, index)) {
            if (index >= part->size())
                return;
            part = &(*part)[index];
            continue;
        }
        if (!part->is_object() || !part->contains(name)) {
            std::vector<std::string> known;
            if (part->is_object())
                for (const auto& [each, ignored] : part->items())
                    known.push_back(each);
            throw Misuse("the status has no field \"" + field.substr(0, end) + '"' + panel::didYouMean(name, known) +
                         " (panel status --json shows them)");
        }
        part = &(*part)[name];
    }
    if (part->is_structured() && !value.is_structured())
        throw Misuse("the field \"" + field + "\" has parts: name one, such as backLight.0");
}

Awaited statusFieldOf(const panel::Panel& panel, panel::Driver& driver, const std::string& field,
                      const std::string& value) {
    Json wanted = value;
    try {
        wanted = panel::parseJson(value); // so that 1 is 1.0
    } catch (const std::exception&) { // a text
    }
    checkField(statusJson(panel, &driver), field, wanted);
    const auto look = [&panel, &driver, field, value, wanted]() -> std::optional<Event> {
        if (!driver.isOn())
            return std::nullopt;
        const Json status = statusJson(panel, &driver);
        const Json* found = fieldOf(status, field);
        if (!found || (found->is_string() ? found->get<std::string>() != value : *found != wanted))
            return std::nullopt;
        return Event{{{"status", field}, {"value", *found}}, ""};
    };
    return {look, "the status " + field + " is not " + value};
}

Awaited awaited(const panel::Panel& panel, panel::Driver& driver, const WaitOptions& options) {
    if (!options.window.empty())
        return windowOf(options.window);
    if (!options.process.empty())
        return exitOf(panel, driver, options.process);
    if (!options.file.empty())
        return fileAt(panel, options.file);
    if (!options.logged.empty())
        return lineOf(panel, options.logged);
    if (!options.shown.empty())
        return sight(driver, options.shown);
    if (!options.status.empty())
        return statusFieldOf(panel, driver, options.status.front(), options.status.back());
    return options.values.empty() ? requestTo(panel, options.request) : valuesOf(panel, driver, options.values);
}

void wait(Tool& tool, const WaitOptions& options) {
    const bool named[] = {!options.window.empty(),  !options.process.empty(), !options.file.empty(),
                          !options.logged.empty(),  !options.shown.empty(),   !options.values.empty(),
                          !options.request.empty(), !options.status.empty()};
    if (std::count(std::begin(named), std::end(named), true) != 1)
        throw Misuse(
            "wait for what? Name one of --window, --exit, --file, --log, --shows, --values, --request, --status");
    const std::uint32_t limit = parseLimit(options.limit);
    const panel::Panel panel = tool.panel();
    panel::Driver driver(panel);
    const Awaited event = awaited(panel, driver, options);
    std::optional<Event> happened;
    waitWithProgress(
        driver, [&] { return !driver.isOn() || (happened = event.look()); }, limit);
    if (!happened && !driver.isOn())
        throw std::runtime_error("the panel was switched off meanwhile");
    if (!happened) {
        complain(event.missing + " after " + formatDuration(limit) + " (--limit allows more)");
        tool.exitCode = limitPassed;
    } else if (options.json) {
        printJson(happened->json);
    } else if (!happened->text.empty()) {
        std::puts(happened->text.c_str());
    }
}

} // namespace

void addWaitCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("wait", "Let panel time pass until something has happened");
    auto options = std::make_shared<WaitOptions>();
    command->add_option("--window", options->window, "Wait for a window of this class")->type_name("CLASS");
    command
        ->add_option("--exit", options->process,
                     "Wait for the end of TarvexHelper.exe#2, or of the last TarvexHelper.exe")
        ->type_name("PROCESS");
    command->add_option("--file", options->file, "Wait until the panel has this file or folder")->type_name("PATH");
    command
        ->add_option("--log", options->logged,
                     "Wait until a line of the helper's log contains this text, and print the line")
        ->type_name("TEXT");
    command
        ->add_option("--shows", options->shown,
                     "Wait until the screen is covered by a window of this class, or by a window of this colour "
                     "(black, white), or by nothing")
        ->type_name("WHAT");
    command
        ->add_option("--values", options->values,
                     "Wait until a device has these values, as far as they are named, such as BKL1 127, or a tag these "
                     "bytes: tags 18 02 04")
        ->type_name("DEVICE VALUE ...")
        ->expected(1, 64);
    command
        ->add_option("--request", options->request,
                     "Wait for the next request to a device, or for the next one of an operation, such as BZR1 beep, "
                     "and print it; any: of any device")
        ->type_name("DEVICE [OPERATION]")
        ->expected(1, 2);
    command
        ->add_option("--status", options->status,
                     "Wait until a field of panel status --json has this value, such as userActive false or "
                     "screen.background black")
        ->type_name("FIELD VALUE")
        ->type_size(2)
        ->expected(1)
        ->allow_extra_args(false);
    command->add_option("--limit", options->limit, "Time-out; exit code 124 if it passes")
        ->type_name("DURATION")
        ->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] { wait(tool, *options); });
}

} // namespace tool
