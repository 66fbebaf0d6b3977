#include "platform/panel/Devices.h"

#include "platform/panel/DidYouMean.h"
#include "platform/panel/Hex.h"
#include "platform/panel/Json.h"
#include "platform/panel/Mapping.h"
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Host.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace panel {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kinds[] = {"answer", "refuse", "block", "delay", "code"}; // in the order of Behaviour::Kind

std::string textOf(const Behaviour& behaviour) {
    const std::string kind(kinds[static_cast<std::size_t>(behaviour.kind)]);
    const bool numbered = behaviour.kind != Behaviour::Kind::answer && behaviour.kind != Behaviour::Kind::block;
    return numbered ? kind + ' ' + std::to_string(behaviour.number) : kind;
}

Behaviour behaviourFrom(const std::string& text) {
    std::istringstream words(text);
    std::string kind;
    Behaviour behaviour;
    words >> kind >> behaviour.number;
    const auto* known = std::find(std::begin(kinds), std::end(kinds), kind);
    if (known == std::end(kinds))
        throw std::runtime_error("a device cannot \"" + text + '"');
    behaviour.kind = static_cast<Behaviour::Kind>(known - std::begin(kinds));
    return behaviour;
}

// Reads the values one by one, since the JSON library would silently cut a number of more than 32 bits.
std::vector<std::uint32_t> valuesFrom(const Json& numbers) {
    std::vector<std::uint32_t> values;
    for (const Json& number : numbers) {
        if (!number.is_number_unsigned() || number.get<std::uint64_t>() > UINT32_MAX)
            throw std::runtime_error("not a 32-bit value: " + jsonText(number));
        values.push_back(number);
    }
    return values;
}

std::string_view withoutSeparator(std::string_view path) {
    return path.starts_with('\\') ? path.substr(1) : path;
}

// Releases the threads that wait in a driver. They read the device's behaviour again.
void wakeWaiting(Image& image) {
    for (Slot thread = 1; thread <= image.threadsUsed; ++thread) {
        const ThreadRecord& record = scheduler::at(image, thread);
        if (record.state == ThreadState::waiting && record.waitKind == WaitKind::device)
            scheduler::release(image, thread, 0);
    }
}

void checkOperation(const DeviceFacts& device, std::string_view operation) {
    const auto named = [&](const OperationFacts& known) { return known.name == operation; };
    if (operation == "open" && !device.path.empty())
        return;
    std::vector<std::string> names;
    for (const OperationFacts& known : device.operations)
        names.emplace_back(known.name);
    if (std::none_of(device.operations.begin(), device.operations.end(), named))
        throw std::runtime_error("the device " + std::string(device.name) + " has no \"" + std::string(operation) +
                                 '"' + didYouMean(operation, names) + " (panel device " + std::string(device.name) +
                                 " lists its operations)");
}

std::string lineOf(const Request& request) {
    char time[24];
    std::snprintf(time, sizeof time, "%10llu ", static_cast<unsigned long long>(request.time));
    std::string line =
        time + request.process + " t" + std::to_string(request.thread) + ' ' + request.device + ' ' + request.operation;
    for (const std::uint32_t word : request.words)
        line += ' ' + std::to_string(word);
    return line + (request.error ? " = error " + std::to_string(request.error) : " = done") + '\n';
}

Request requestFrom(const std::string& line) {
    Request request;
    const std::size_t thread = line.find(" t", line.find('#')); // the name of a program may contain blanks
    std::istringstream head(line.substr(0, thread));
    head >> request.time >> std::ws;
    std::getline(head, request.process);
    std::istringstream rest(line.substr(std::min(thread, line.size() - 2) + 2));
    rest >> request.thread >> request.device >> request.operation;
    for (std::string word; rest >> word && word != "=";)
        request.words.push_back(static_cast<std::uint32_t>(std::stoul(word)));
    std::string result;
    rest >> result >> request.error;
    return request;
}

std::string lineOf(const LandedTouch& touch) {
    char start[80];
    std::snprintf(start, sizeof start, "%10llu %s %d %d ", static_cast<unsigned long long>(touch.time),
                  touch.event.c_str(), touch.x, touch.y);
    std::string line = start;
    if (touch.swallowed)
        line += "swallowed ";
    return line + (touch.window.empty() ? "on nothing" : "on " + touch.window + " of " + touch.process) + '\n';
}

LandedTouch touchFrom(const std::string& line) {
    LandedTouch touch;
    std::istringstream words(line);
    std::string word;
    words >> touch.time >> touch.event >> touch.x >> touch.y >> word;
    touch.swallowed = word == "swallowed";
    const std::size_t on = line.find(" on ") + 4;
    const std::size_t of = line.rfind(" of ");
    if (of != std::string::npos && of > on) {
        touch.window = line.substr(on, of - on);
        touch.process = line.substr(of + 4);
    }
    return touch;
}

std::string tagFrom(const fs::path& file) {
    try {
        if (!fs::is_regular_file(file))
            throw std::runtime_error("it is not a regular file");
        return parseHex(host::readFile(file.string()));
    } catch (const std::exception& error) {
        throw std::runtime_error("not readable: " + file.string() + ": " + error.what());
    }
}

// The operations of the tag library are its functions.
std::vector<OperationFacts> tagOperations() {
    return {
#define TAG_FUNCTION(name) {#name, 0, 0, 0},
#include <tagUserAPI.inc>
    };
}

} // namespace

const std::vector<DeviceFacts>& knownDevices() {
    // Never destroyed: threads may still use it while the process ends.
    static const auto& devices = *new std::vector<DeviceFacts>{
        {"BKL1", "BKL1:", "backlight", {{"read", 0x01130408, 0, 16}, {"write", 0x0113040C, 16, 0}}, {200, 1, 200, 1}},
        {"BZR1", "BZR1:", "buzzer", {{"beep", 0x01012EF4, 8, 0}}, {}},
        {"SHC1", "SHC1:", "eMMC counter", {{"count", 0x72EE8, 0, 4}}, {0}},
        {"NANDFlash",
         "\\NANDFlash\\Vol:",
         "flash protection",
         {{"writable", 0x70230, 0, 0}, {"read-only", 0x7022C, 0, 0}},
         {}},
        {"tags", "", "tag library", tagOperations(), {}},
        {"PowerManager", "", "user activity", {}, {}},
    };
    return devices;
}

Behaviour DeviceState::behaviour(std::string_view operation) const {
    const auto found = behaviours.find(operation);
    return found == behaviours.end() ? Behaviour{} : found->second;
}

Devices::Devices(const fs::path& panelDirectory) : root(panelDirectory), folder(root / "devices") {}

const DeviceFacts& Devices::facts(std::string_view name) {
    for (const DeviceFacts& device : knownDevices())
        if (equalCaseBlind(device.name, name))
            return device;
    std::vector<std::string> names;
    for (const DeviceFacts& device : knownDevices())
        names.emplace_back(device.name);
    throw std::runtime_error("a panel has no device \"" + std::string(name) + '"' + didYouMean(name, names) +
                             " (panel device lists them)");
}

const DeviceFacts* Devices::driverAt(std::string_view panelPath) {
    for (const DeviceFacts& device : knownDevices())
        if (!device.path.empty() && equalCaseBlind(withoutSeparator(device.path), withoutSeparator(panelPath)))
            return &device;
    return nullptr;
}

fs::path Devices::fileOf(std::string_view name) const {
    return folder / (std::string(name) + ".json");
}

fs::path Devices::fileOf(std::uint32_t tag) const {
    return folder / "tags" / std::to_string(tag);
}

DeviceState Devices::state(std::string_view name) const {
    const DeviceFacts& device = facts(name);
    DeviceState state{std::string(device.name), false, device.values, {}};
    if (!fs::exists(fileOf(device.name))) // the panel is older than this device: it lacks the device
        return state;
    try {
        const Json json = parseJson(host::readFile(fileOf(device.name).string()));
        state.present = json.at("present");
        if (json.contains("values"))
            state.values = valuesFrom(json.at("values"));
        for (const auto& [operation, does] : json.at("does").items())
            state.behaviours[operation] = behaviourFrom(does);
    } catch (const std::exception& error) {
        throw std::runtime_error("not readable: " + fileOf(device.name).string() + ": " + error.what());
    }
    if (state.values.size() != device.values.size())
        throw std::runtime_error("wrong number of values: " + fileOf(device.name).string());
    return state;
}

bool Devices::has(std::string_view name) const {
    return state(name).present;
}

void Devices::save(const DeviceState& state) const {
    Json json{{"present", state.present}};
    if (!state.values.empty())
        json["values"] = state.values;
    json["does"] = Json::object();
    for (const auto& [operation, behaviour] : state.behaviours)
        json["does"][operation] = textOf(behaviour);
    host::writeFile(fileOf(state.name).string(), jsonText(json) + '\n');
}

void Devices::check(std::string_view name, Behaviour behaviour, std::string_view operation) {
    const DeviceFacts& device = facts(name);
    if (device.operations.empty())
        throw std::runtime_error(std::string(device.name) +
                                 " has no operations; it can only be added or removed (add, remove)");
    if (behaviour.kind == Behaviour::Kind::code && device.name != "tags")
        throw std::runtime_error("only functions of the tag library return an error code");
    if (!operation.empty())
        checkOperation(device, operation);
}

void Devices::setBehaviour(std::string_view name, Behaviour behaviour, std::string_view operation) const {
    check(name, behaviour, operation);
    const DeviceFacts& device = facts(name);
    std::vector<std::string> operations;
    if (!operation.empty()) {
        operations.emplace_back(operation);
    } else {
        for (const OperationFacts& known : device.operations)
            operations.emplace_back(known.name);
        // "answer" for the whole device also ends a refusal of CreateFileW.
        if (behaviour.kind == Behaviour::Kind::answer)
            operations.emplace_back("open");
    }
    LockedChange change(root);
    DeviceState changed = state(name);
    for (const std::string& each : operations) {
        changed.behaviours.erase(each);
        if (behaviour.kind != Behaviour::Kind::answer)
            changed.behaviours[each] = behaviour;
    }
    save(changed);
    if (change.image())
        wakeWaiting(*change.image());
}

void Devices::setPresent(std::string_view name, bool present) const {
    const LockedChange change(root);
    DeviceState changed = state(name);
    changed.present = present;
    save(changed);
}

void Devices::setValues(std::string_view name, const std::vector<std::uint32_t>& values) const {
    LockedChange change(root);
    DeviceState changed = state(name);
    if (values.size() != changed.values.size())
        throw std::runtime_error(changed.name + " has " + std::to_string(changed.values.size()) + " values, not " +
                                 std::to_string(values.size()));
    changed.values = values;
    save(changed);
    // The kernel file holds the record of the running backlight driver; the device's file only holds the record at
    // boot.
    if (change.image() && changed.name == "BKL1")
        std::copy(values.begin(), values.end(), change.image()->backLight);
}

std::vector<Request> Devices::requests(std::string_view device) const {
    std::vector<Request> result;
    std::istringstream file(host::readFile((folder / "requests").string()));
    for (std::string line; std::getline(file, line);)
        if (Request request = requestFrom(line); device.empty() || equalCaseBlind(device, request.device))
            result.push_back(std::move(request));
    return result;
}

void Devices::note(const Request& request) const {
    host::appendToFile((folder / "requests").string(), lineOf(request));
}

std::vector<LandedTouch> Devices::touches() const {
    std::vector<LandedTouch> result;
    std::istringstream file(host::readFile((folder / "touches").string()));
    for (std::string line; std::getline(file, line);)
        result.push_back(touchFrom(line));
    return result;
}

void Devices::note(const LandedTouch& touch) const {
    host::appendToFile((folder / "touches").string(), lineOf(touch));
}

void Devices::forgetRequests() const {
    fs::remove(folder / "requests");
    fs::remove(folder / "touches");
}

std::map<std::uint32_t, std::string> Devices::tags() const {
    std::map<std::uint32_t, std::string> result;
    if (!fs::is_directory(folder / "tags"))
        return result;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder / "tags")) {
        const std::string name = entry.path().filename().string();
        if (name.size() < 10 && name.find_first_not_of("0123456789") == std::string::npos)
            result[static_cast<std::uint32_t>(std::stoul(name))] = tagFrom(entry.path());
    }
    return result;
}

std::optional<std::string> Devices::tag(std::uint32_t id) const {
    if (!fs::exists(fileOf(id)))
        return std::nullopt;
    return tagFrom(fileOf(id));
}

void Devices::setTag(std::uint32_t id, std::string_view bytes) const {
    fs::create_directories(folder / "tags");
    host::writeFile(fileOf(id).string(), formatHex(bytes));
}

bool Devices::removeTag(std::uint32_t id) const {
    return fs::remove(fileOf(id));
}

void Devices::create(const std::vector<std::string>& without) const {
    for (const DeviceFacts& device : knownDevices()) {
        const bool missing = std::any_of(without.begin(), without.end(),
                                         [&](const std::string& name) { return equalCaseBlind(name, device.name); });
        save({std::string(device.name), !missing, device.values, {}});
    }
}

} // namespace panel
