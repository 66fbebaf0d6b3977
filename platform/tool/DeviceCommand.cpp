#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/RequestText.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

using panel::Behaviour;
using panel::Json;

struct DeviceOptions {
    std::string device;
    std::string action = "show";
    std::vector<std::string> words;
    std::uint32_t error = 31;
    std::string time = "1s";
    bool json = false;
};

std::string describe(const Behaviour& behaviour) {
    switch (behaviour.kind) {
    case Behaviour::Kind::answer:
        return "answers";
    case Behaviour::Kind::refuse:
        return "refuses with error " + std::to_string(behaviour.number);
    case Behaviour::Kind::block:
        return "blocks";
    case Behaviour::Kind::delay:
        return "answers after " + formatDuration(behaviour.number);
    case Behaviour::Kind::code:
        return "succeeds with the error code " + std::to_string(behaviour.number);
    }
    return {};
}

std::string joined(const std::vector<std::uint32_t>& numbers) {
    std::string text;
    for (const std::uint32_t number : numbers)
        text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
}

// Lists the operations that do not simply work: "write refuses with error 31".
std::string peculiarities(const panel::DeviceState& state) {
    std::string text;
    for (const auto& [operation, behaviour] : state.behaviours)
        text += (text.empty() ? "" : ", ") + operation + ' ' + describe(behaviour);
    return text;
}

// Lists the operations of the device, and "open" if it has a behaviour.
std::vector<std::string> operationsOf(const panel::DeviceFacts& facts, const panel::DeviceState& state) {
    std::vector<std::string> names;
    if (state.behaviours.contains("open"))
        names.emplace_back("open");
    for (const panel::OperationFacts& operation : facts.operations)
        names.emplace_back(operation.name);
    return names;
}

Json asJson(const panel::Devices& devices, const panel::DeviceFacts& facts, bool withRequests) {
    const panel::DeviceState state = devices.state(facts.name);
    Json answer{{"name", state.name}, {"what", facts.what}, {"present", state.present}, {"values", state.values}};
    answer["does"] = Json::object();
    for (const std::string& operation : operationsOf(facts, state))
        answer["does"][operation] = describe(state.behaviour(operation));
    if (!withRequests)
        return answer;
    answer["requests"] = Json::array();
    for (const panel::Request& request : devices.requests(state.name))
        answer["requests"].push_back(requestJson(request));
    return answer;
}

void list(const panel::Devices& devices, bool json) {
    Table table({"DEVICE", "WHAT", "THERE", "VALUES", "DOES"});
    Json answer = Json::array();
    for (const panel::DeviceFacts& facts : panel::knownDevices()) {
        const panel::DeviceState state = devices.state(facts.name);
        answer.push_back(asJson(devices, facts, false));
        table.add({state.name, std::string(facts.what), state.present ? "yes" : "no", joined(state.values),
                   peculiarities(state)});
    }
    if (json)
        printJson(answer);
    else
        table.print();
}

void show(const panel::Devices& devices, const panel::DeviceFacts& facts, bool json) {
    if (json)
        return printJson(asJson(devices, facts, true));
    const panel::DeviceState state = devices.state(facts.name);
    Table table;
    table.add({"device", state.name + ", " + std::string(facts.what) + (state.present ? "" : ", not there")});
    if (!state.values.empty())
        table.add({"values", joined(state.values)});
    for (const std::string& operation : operationsOf(facts, state))
        table.add({operation, describe(state.behaviour(operation))});
    for (const panel::Request& request : devices.requests(state.name))
        table.add({"request", requestText(request)});
    table.print();
}

Behaviour behaviourOf(const DeviceOptions& options) {
    if (options.error == 0 && (options.action == "refuse" || options.action == "code"))
        throw Misuse("--error 0 would be a success: name another number");
    if (options.action == "refuse")
        return {Behaviour::Kind::refuse, options.error};
    if (options.action == "code")
        return {Behaviour::Kind::code, options.error};
    if (options.action == "delay")
        return {Behaviour::Kind::delay, parseLimit(options.time)};
    return {options.action == "block" ? Behaviour::Kind::block : Behaviour::Kind::answer, 0};
}

std::vector<std::uint32_t> valuesOf(const std::vector<std::string>& words) {
    std::vector<std::uint32_t> values;
    for (const std::string& word : words)
        values.push_back(parseValue(word));
    return values;
}

void change(const panel::Devices& devices, const DeviceOptions& options) {
    const bool addsOrRemoves = options.action == "add" || options.action == "remove";
    if (addsOrRemoves && !options.words.empty())
        throw Misuse(options.action + " concerns the whole device, not \"" + options.words.front() + '"');
    if (addsOrRemoves)
        return devices.setPresent(options.device, options.action == "add");
    if (options.action == "set") {
        const panel::DeviceFacts& device = panel::Devices::facts(options.device);
        if (device.values.empty() || options.words.size() != device.values.size())
            throw Misuse(std::string(device.name) + " has " + std::to_string(device.values.size()) + " values, not " +
                         std::to_string(options.words.size()));
        return devices.setValues(options.device, valuesOf(options.words));
    }
    // All operations are checked before the first one changes, so that a mistyped word changes nothing.
    orMisuse([&] { panel::Devices::check(options.device, behaviourOf(options)); });
    for (const std::string& operation : options.words)
        orMisuse([&] { panel::Devices::check(options.device, behaviourOf(options), operation); });
    if (options.words.empty())
        return devices.setBehaviour(options.device, behaviourOf(options));
    for (const std::string& operation : options.words)
        devices.setBehaviour(options.device, behaviourOf(options), operation);
}

constexpr const char* examples = R"(
Actions without WORDS:
  show       print the state, and the requests of programs since boot (default)
  add        give the panel the device
  remove     take the device from the panel
Actions on operations (WORDS: names of operations, or "open" for CreateFileW; default: all operations):
  refuse     fail with the error --error
  block      wait until another action
  delay      wait for --time of panel time, then work
  code       functions of the tag library only: succeed, but return the error code --error
  answer     work normally again
Action on values (WORDS: all values of the device):
  set        BKL1: the four words of the record; SHC1: the count

Examples:
  panel device BKL1 refuse write
  panel device BKL1 set 128 1 128 1
  panel device NANDFlash refuse read-only --error 5
)";

} // namespace

void addDeviceCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("device", "Show the panel's devices, and set their values and behaviour");
    auto options = std::make_shared<DeviceOptions>();
    command->add_option("DEVICE", options->device, "Name of the device; default: list all devices");
    command->add_option("ACTION", options->action, "Action")
        ->check(CLI::IsMember({"show", "refuse", "block", "delay", "code", "answer", "set", "add", "remove"}));
    command->add_option("WORDS", options->words, "Operations for a behaviour, or values for set");
    command->add_option("--error", options->error, "Error number for refuse, error code for code")
        ->type_name("N")
        ->capture_default_str();
    command->add_option("--time", options->time, "Duration for delay")->type_name("DURATION")->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->footer(examples);
    command->callback([options, &tool] {
        const panel::Devices devices = tool.panel().devices();
        if (!options->device.empty())
            orMisuse([&] { return panel::Devices::facts(options->device).name; });
        if (options->device.empty())
            list(devices, options->json);
        else if (options->action == "show")
            show(devices, panel::Devices::facts(options->device), options->json);
        else
            change(devices, *options);
    });
}

} // namespace tool
