#include "platform/panel/Json.h"
#include "platform/panel/Text.h"
#include "platform/tool/Commands.h"
#include "platform/tool/OutputFile.h"
#include "platform/tool/RegistryFile.h"
#include "platform/tool/RegistryPath.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

using panel::Json;
namespace registry = panel::registry;

constexpr const char* keyHelp = "Such as HKEY_LOCAL_MACHINE\\init, or HKLM\\init";

struct RegistryOptions {
    std::string key;
    std::string value;
    std::vector<std::string> data;
    std::string type = "REG_SZ";
    std::string file;
    bool ansi = false;
    bool flash = false;
    bool flushed = false;
    bool json = false;
};

const registry::Key& keyOf(const registry::Tree& tree, const std::string& path) {
    const registry::Key* key = tree.find(fullPath(path));
    if (!key)
        throw std::runtime_error("no such key in the registry: " + path + " (panel registry list shows the keys)");
    return *key;
}

// Returns the path of an existing key in the spelling of the registry.
std::string pathOf(const registry::Tree& tree, const std::string& path) {
    keyOf(tree, path); // throws if the key does not exist
    const std::string full = fullPath(path);
    std::string spelled;
    for (std::size_t end = 0; end != std::string::npos;) {
        end = full.find('\\', end + 1);
        spelled += (spelled.empty() ? "" : "\\") + tree.find(full.substr(0, end))->name;
    }
    return spelled;
}

std::string describe(const registry::Value& value) {
    std::string text;
    std::vector<std::string> texts;
    if (registry::textOf(value, text))
        return '"' + oneLine(text) + '"';
    if (!registry::textsOf(value, texts))
        return registry::hexOf(value.data);
    for (const std::string& each : texts)
        text += (text.empty() ? "\"" : ", \"") + oneLine(each) + '"';
    return text;
}

Json toJson(const registry::Value& value) {
    Json json{{"name", value.name}, {"type", registry::typeName(value.type)}};
    std::string text;
    std::vector<std::string> texts;
    if (registry::textOf(value, text))
        json["text"] = text;
    else if (registry::textsOf(value, texts))
        json["texts"] = texts;
    json["bytes"] = registry::hexOf(value.data);
    return json;
}

void list(Json& json, Table& table, const std::string& path, const registry::Key& key) {
    Json values = Json::array();
    table.add({path});
    for (const registry::Value& value : key.values) {
        values.push_back(toJson(value));
        table.add(
            {"  " + (value.name.empty() ? "(default)" : value.name), registry::typeName(value.type), describe(value)});
    }
    json.push_back({{"key", path}, {"values", values}});
    for (const registry::Key& below : key.keys)
        list(json, table, path + '\\' + below.name, below);
}

registry::Tree treeOf(const panel::Panel& panel, const RegistryOptions& options) {
    return panel.registry(options.flash ? registry::Copy::flash : registry::Copy::now);
}

void list(const panel::Panel& panel, const RegistryOptions& options) {
    const registry::Tree tree = treeOf(panel, options);
    Json json = Json::array();
    Table table;
    if (options.key.empty())
        for (const registry::Key& root : tree.roots())
            list(json, table, root.name, root);
    else
        list(json, table, pathOf(tree, options.key), keyOf(tree, options.key));
    if (options.json)
        printJson(json);
    else
        table.print();
}

void read(const panel::Panel& panel, const RegistryOptions& options) {
    const registry::Tree tree = treeOf(panel, options);
    const registry::Value* value = keyOf(tree, options.key).values.find(options.value);
    if (!value)
        throw std::runtime_error("the key " + options.key + " has no value \"" + options.value + '"');
    std::string text;
    std::vector<std::string> texts;
    if (options.json)
        printJson(toJson(*value));
    else if (registry::textOf(*value, text))
        std::puts(text.c_str());
    else if (registry::textsOf(*value, texts))
        for (const std::string& each : texts)
            std::puts(each.c_str());
    else
        std::puts(registry::hexOf(value->data).c_str());
}

registry::Value valueOf(const RegistryOptions& options) {
    const std::uint32_t type = orMisuse([&] { return registry::typeNamed(options.type); });
    if (type == registry::typeTexts)
        return registry::textsValue(options.value, options.data);
    if (options.data.size() > 1)
        throw Misuse("this type takes one DATA (only REG_MULTI_SZ takes several)");
    const std::string data = options.data.empty() ? std::string() : options.data.front();
    if (type == registry::typeText || type == registry::typeExpandText)
        return registry::textValue(options.value, data, type);
    if (type != registry::typeNumber && type != registry::typeBigEndianNumber)
        return {options.value, type, orMisuse([&] { return registry::bytesOf(data); })};
    const std::int64_t number = parseNumber(data);
    if (number < 0 || number > 0xFFFFFFFF)
        throw Misuse("a " + options.type + " has 32 bits: \"" + data + "\" is none");
    return registry::numberValue(options.value, static_cast<std::uint32_t>(number), type);
}

void write(panel::Panel panel, const RegistryOptions& options) {
    checkName(options.value);
    orMisuse([&] { checkExpressible(options.key, options.value); });
    const registry::Value value = valueOf(options);
    const std::string path = fullPath(options.key);
    panel.changeRegistry([&](registry::Tree& tree) { tree.make(path)->set(value); }, options.flushed);
}

void remove(panel::Panel panel, const RegistryOptions& options, bool wholeKey) {
    const std::string path = fullPath(options.key);
    const registry::Tree tree = panel.registry(registry::Copy::now);
    if (wholeKey && registry::rootNamed(path) == path)
        throw Misuse(path + " is a root and stays (name a key below it)");
    if (!wholeKey && !keyOf(tree, options.key).values.find(options.value))
        throw std::runtime_error("the key " + options.key + " has no value \"" + options.value + '"');
    keyOf(tree, options.key); // throws if the key does not exist
    panel.changeRegistry(
        [&](registry::Tree& changed) {
            registry::Key* key = changed.find(path);
            const bool removed = wholeKey ? changed.remove(path) : key && key->values.remove(options.value);
            if (!removed)
                throw std::runtime_error("somebody else deleted it at the same time: " + path);
        },
        options.flushed);
}

void exportTo(const panel::Panel& panel, const RegistryOptions& options) {
    const registry::Tree tree = treeOf(panel, options);
    const std::string path = options.key.empty() ? "" : pathOf(tree, options.key);
    const std::string content = formatRegistryFile(tree, path, options.ansi);
    OutputFile output(options.file);
    output.write(content);
    output.finish(path.empty() ? "the registry" : path);
}

void import(panel::Panel panel, const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    if (const int error = std::filesystem::is_directory(file) ? EISDIR : stream ? 0 : errno)
        throw std::runtime_error("cannot read " + file + ": " + std::strerror(error));
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    std::vector<RegistryChange> changes;
    try {
        changes = parseRegistryFile(bytes);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file + ", " + error.what());
    }
    panel.changeRegistry([&](registry::Tree& tree) { merge(tree, changes); }, false);
    std::printf("Merged %s into the registry\n", file.c_str());
}

} // namespace

void addRegistryCommands(CLI::App& app, Tool& tool) {
    auto* commands =
        app.add_subcommand("registry", "List, read and change the panel's registry; move it in and out as a file");
    commands->require_subcommand(1);
    auto options = std::make_shared<RegistryOptions>();
    const auto add = [&](const char* name, const char* help) { return commands->add_subcommand(name, help); };
    const auto addKey = [&](CLI::App* command) { return command->add_option("KEY", options->key, keyHelp); };
    const auto addFlushed = [&](CLI::App* command) {
        command->add_flag("--flush", options->flushed, "Change flash, too, so that the change survives a power cut");
    };
    const auto addFlash = [&](CLI::App* command) {
        command->add_flag("--flash", options->flash, "The content of flash, which survives a power cut");
    };
    const auto addLooks = [&](CLI::App* command) {
        addFlash(command);
        command->add_flag("--json", options->json, "Answer in JSON");
    };
    constexpr const char* valueHelp = "The value's name; \"\": the key's default value";

    auto* listing = add("list", "Print a key and its subkeys; without KEY everything");
    addKey(listing);
    addLooks(listing);
    listing->callback([options, &tool] { list(tool.panel(), *options); });

    auto* reading = add("read", "Print a value: text unchanged, other data in hexadecimal");
    addKey(reading)->required();
    reading->add_option("VALUE", options->value, valueHelp);
    addLooks(reading);
    reading->callback([options, &tool] { read(tool.panel(), *options); });

    auto* writing = add("write", "Set a value; create its key if it is missing");
    addKey(writing)->required();
    writing->add_option("VALUE", options->value, valueHelp)->required();
    writing->add_option("DATA", options->data, "A text, a number, or bytes in hexadecimal, depending on the type");
    writing->add_option("--type", options->type, "REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ, ...")
        ->type_name("TYPE")
        ->capture_default_str();
    addFlushed(writing);
    writing->callback([options, &tool] { write(tool.panel(), *options); });

    auto* removal = add("delete", "Delete a value; without VALUE delete the key and its subkeys");
    addKey(removal)->required();
    auto* value = removal->add_option("VALUE", options->value, valueHelp);
    addFlushed(removal);
    removal->callback([options, value, &tool] { remove(tool.panel(), *options, value->count() == 0); });

    auto* writer = add("export", "Write a key and its subkeys to a registry file (.reg); without KEY everything");
    writer->add_option("FILE", options->file, "File on this machine; it is replaced")->required();
    addKey(writer);
    writer->add_flag("--ansi", options->ansi, "REGEDIT4 in ANSI (code page 1252); default: version 5.00 in UTF-16");
    addFlash(writer);
    writer->callback([options, &tool] { exportTo(tool.panel(), *options); });

    auto* reader = add("import", "Merge a registry file (.reg) into the registry; flushes nothing");
    reader->add_option("FILE", options->file, "File on this machine, REGEDIT4 or version 5.00")->required();
    reader->callback([options, &tool] { import(tool.panel(), options->file); });
}

} // namespace tool
