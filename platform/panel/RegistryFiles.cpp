// Converts the registry's values to and from text, and reads and writes its files.
#include "platform/panel/Json.h"
#include "platform/panel/Registry.h"

#include "platform/panel/Hex.h"
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Host.h"

#include <utf8.h>

#include <array>
#include <iterator>
#include <stdexcept>

namespace panel::registry {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view typeNames[] = {"REG_NONE",   "REG_SZ",      "REG_EXPAND_SZ",
                                          "REG_BINARY", "REG_DWORD",   "REG_DWORD_BIG_ENDIAN",
                                          "REG_LINK",   "REG_MULTI_SZ"};

// Appends a text with its terminating zero.
void append(Bytes& data, std::string_view text) {
    std::u16string wide;
    std::string valid;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), 0xFFFDU);
    utf8::utf8to16(valid.begin(), valid.end(), std::back_inserter(wide));
    wide += u'\0';
    for (const char16_t unit : wide) {
        data.push_back(static_cast<std::uint8_t>(unit));
        data.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
}

std::u16string unitsOf(const Bytes& data) {
    std::u16string units;
    for (std::size_t at = 0; at + 1 < data.size(); at += 2)
        units += static_cast<char16_t>(data[at] | data[at + 1] << 8);
    return units;
}

// Returns "" for an invalid sequence. The caller notices that, because the text then differs from the bytes.
std::string toText(const std::u16string& units) {
    std::string text;
    try {
        utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    } catch (const utf8::exception&) {
        text.clear();
    }
    return text;
}

bool isNumber(const Value& value) {
    return value.type == typeNumber && value.data.size() == 4;
}

std::uint32_t numberOf(const Value& value) {
    return value.data[0] | value.data[1] << 8 | value.data[2] << 16 | static_cast<std::uint32_t>(value.data[3]) << 24;
}

// Chooses the most readable form that gives back the same bytes.
Json toJson(const Value& value) {
    Json json{{"type", typeName(value.type)}};
    std::string text;
    std::vector<std::string> texts;
    if (textOf(value, text))
        json["text"] = text;
    else if (textsOf(value, texts))
        json["texts"] = texts;
    else if (isNumber(value))
        json["number"] = numberOf(value);
    else
        json["bytes"] = hexOf(value.data);
    return json;
}

std::uint32_t numberFrom(const Json& json) {
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > 0xFFFFFFFF)
        throw std::runtime_error("not a 32-bit number: " + jsonText(json));
    return json.get<std::uint32_t>();
}

Value toValue(const std::string& name, const Json& json) {
    const std::uint32_t type = typeNamed(json.at("type").get<std::string>());
    if (json.contains("text"))
        return textValue(name, json["text"].get<std::string>(), type);
    if (json.contains("texts"))
        return textsValue(name, json["texts"].get<std::vector<std::string>>());
    if (json.contains("number"))
        return numberValue(name, numberFrom(json["number"]), type);
    return {name, type, bytesOf(json.at("bytes").get<std::string>())};
}

// The names differ, so the members are appended: the library would compare a name with all before it.
void list(Json::object_t& json, const std::string& path, const Key& key) {
    Json::object_t values;
    for (const Value& value : key.values)
        values.emplace_back(value.name, toJson(value));
    json.emplace_back(path, std::move(values));
    for (const Key& below : key.keys)
        list(json, path + '\\' + below.name, below);
}

// Builds the tree of a registry from the pieces of its file. No object with thousands of members comes into being: the
// library would search such an object from its beginning for each member.
class Reader {
public:
    bool receive(std::size_t depth, Json::parse_event_t event, const Json& piece) {
        using Event = Json::parse_event_t;
        const bool named = event == Event::key;
        if (depth < names.size() && (event == Event::value || event == Event::array_start))
            throw std::runtime_error(names[depth] + " is not a JSON object");
        if (named && depth == 1) {
            const auto path = piece.get<std::string>();
            names[1] = '"' + path + '"';
            key = tree.make(path);
            if (!key)
                throw std::runtime_error(names[1] + " does not begin with a root");
        } else if (named && depth == 2) {
            name = piece.get<std::string>();
            names[2] = "the value \"" + name + '"';
        } else if (event == Event::object_end && depth == 2) {
            key->set(toValue(name, piece));
        }
        return depth > 2 || event != Event::object_end;
    }

    Tree tree;

private:
    std::array<std::string, 3> names{"the file"}; // what is read at each depth
    Key* key = nullptr;
    std::string name;
};

fs::path fileOf(const fs::path& panel, Copy copy) {
    return panel / "registry" / (copy == Copy::now ? "now.json" : "flash.json");
}

} // namespace

// The text is well-formed if converting it back gives the same bytes.
bool textOf(const Value& value, std::string& text) {
    if (value.type != typeText && value.type != typeExpandText)
        return false;
    const std::u16string units = unitsOf(value.data);
    text = toText(units.substr(0, units.find(u'\0')));
    return textValue({}, text).data == value.data;
}

bool textsOf(const Value& value, std::vector<std::string>& texts) {
    if (value.type != typeTexts)
        return false;
    texts.clear();
    std::u16string units = unitsOf(value.data);
    // An empty text ends the list.
    for (auto end = units.find(u'\0'); end != 0 && end != std::u16string::npos; end = units.find(u'\0')) {
        texts.push_back(toText(units.substr(0, end)));
        units.erase(0, end + 1);
    }
    return textsValue({}, texts).data == value.data;
}

Value textValue(std::string name, std::string_view text, std::uint32_t type) {
    Value value{std::move(name), type, {}};
    append(value.data, text);
    return value;
}

Value textsValue(std::string name, const std::vector<std::string>& texts) {
    Value value{std::move(name), typeTexts, {}};
    for (const std::string& text : texts)
        append(value.data, text);
    append(value.data, {});
    return value;
}

Value numberValue(std::string name, std::uint32_t number, std::uint32_t type) {
    Value value{std::move(name), type, {}};
    for (int shift = 0; shift < 32; shift += 8)
        value.data.push_back(static_cast<std::uint8_t>(number >> shift));
    return value;
}

std::string typeName(std::uint32_t type) {
    return type < std::size(typeNames) ? std::string(typeNames[type]) : "REG_" + std::to_string(type);
}

std::uint32_t typeNamed(std::string_view name) {
    for (std::uint32_t type = 0; type < std::size(typeNames); ++type)
        if (typeNames[type] == name)
            return type;
    std::uint32_t type = 0;
    if (!name.starts_with("REG_") || !numberIn(name.substr(4), type))
        throw std::runtime_error("not a registry type: \"" + std::string(name) + "\" (such as REG_SZ)");
    return type;
}

std::string hexOf(const Bytes& bytes) {
    return hexLine({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Bytes bytesOf(std::string_view hex) {
    const std::string bytes = parseHex(hex);
    return {bytes.begin(), bytes.end()};
}

Tree load(const fs::path& panel, Copy copy) {
    const fs::path file = fileOf(panel, copy);
    Reader reader;
    try {
        parseJson(host::readFile(file.string()), [&](int depth, Json::parse_event_t event, const Json& piece) {
            return reader.receive(static_cast<std::size_t>(depth), event, piece);
        });
    } catch (const std::exception& error) {
        throw std::runtime_error("the registry cannot be read: " + file.string() + ": " + error.what());
    }
    return std::move(reader.tree);
}

void store(const fs::path& panel, Copy copy, const Tree& tree) {
    Json::object_t json;
    for (const Key& root : tree.roots())
        list(json, root.name, root);
    host::writeFile(fileOf(panel, copy).string(), jsonText(json) + '\n');
}

// Other roots keep their flushed state: a power cut then loses only their changes.
void flush(const fs::path& panel, std::string_view root) {
    const Tree now = load(panel, Copy::now);
    Tree flash = load(panel, Copy::flash);
    if (const Key* key = now.find(root))
        flash.replaceRoot(*key);
    store(panel, Copy::flash, flash);
}

void flushAll(const fs::path& panel) {
    store(panel, Copy::flash, load(panel, Copy::now));
}

void fallBack(const fs::path& panel) {
    store(panel, Copy::now, load(panel, Copy::flash));
}

} // namespace panel::registry
