#include "platform/panel/Hex.h"
#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

using panel::Json;

void listTags(const panel::Devices& devices, bool json) {
    Json answer = Json::array();
    Table table({"TAG", "SIZE", "BYTES"});
    for (const auto& [id, bytes] : devices.tags()) {
        constexpr std::size_t most = 16; // bytes in the table
        answer.push_back({{"tag", id}, {"bytes", panel::hexLine(bytes)}});
        table.add({std::to_string(id), std::to_string(bytes.size()),
                   panel::hexLine(bytes.substr(0, most)) + (bytes.size() > most ? " ..." : "")});
    }
    if (json)
        printJson(answer);
    else if (table.empty())
        std::puts("There are no tags.");
    else
        table.print();
}

void addSet(CLI::App& tags, Tool& tool) {
    struct Options {
        std::uint32_t id = 0;
        std::vector<std::string> bytes;
        std::string number;
    };
    auto* command = tags.add_subcommand("set", "Create or replace a tag");
    auto options = std::make_shared<Options>();
    command->add_option("TAG", options->id, "Number of the tag: 18 is the model code, 48 the GUID")->required();
    auto* bytes = command->add_option("BYTES", options->bytes, "Bytes in hexadecimal, such as 02 04");
    command->add_option("--number", options->number, "A 16-bit number instead of BYTES, such as 1026")
        ->type_name("N")
        ->excludes(bytes);
    command->callback([options, &tool] {
        if (options->bytes.empty() && options->number.empty())
            throw Misuse("give a tag's data as BYTES or --number");
        std::string content;
        for (const std::string& word : options->bytes)
            content += orMisuse([&] { return panel::parseHex(word); });
        if (!options->number.empty()) {
            const std::int64_t number = parseNumber(options->number);
            if (number < 0 || number > 0xFFFF)
                throw Misuse("not a number of 16 bits: " + options->number);
            content = {static_cast<char>(number), static_cast<char>(number >> 8)};
        }
        tool.panel().devices().setTag(options->id, content);
    });
}

} // namespace

void addTagCommands(CLI::App& app, Tool& tool) {
    auto* tags = app.add_subcommand("tag", "Show and change the tag store");
    tags->require_subcommand(1);
    auto json = std::make_shared<bool>(false);
    auto* listing = tags->add_subcommand("list", "List the tags and their data");
    listing->add_flag("--json", *json, "Answer in JSON");
    listing->callback([json, &tool] { listTags(tool.panel().devices(), *json); });
    addSet(*tags, tool);
    auto id = std::make_shared<std::uint32_t>(0);
    auto* removal = tags->add_subcommand("remove", "Remove a tag");
    removal->add_option("TAG", *id, "Number of the tag")->required();
    removal->callback([id, &tool] {
        if (!tool.panel().devices().removeTag(*id))
            throw std::runtime_error("there is no tag " + std::to_string(*id) + " (panel tag list)");
    });
    tags->footer("\nTo make the tag library fail, or to remove it:\n"
                 "  panel device tags refuse TAG_Get_Data --error 7\n"
                 "  panel device tags code TAG_Open --error 7\n"
                 "  panel device tags remove");
}

} // namespace tool
