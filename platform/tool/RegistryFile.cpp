#include "platform/tool/RegistryFile.h"

#include "platform/tool/Ansi.h"
#include "platform/tool/RegistryPath.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <stdexcept>

namespace tool {

namespace {

using panel::registry::Bytes;
using panel::registry::Key;
using panel::registry::Tree;
using panel::registry::Value;

constexpr std::string_view unicodeHead = "Windows Registry Editor Version 5.00";
constexpr std::string_view ansiHead = "REGEDIT4";
constexpr std::string_view byteOrderMark = "\xFF\xFE";
constexpr std::string_view blanks = " \t";

bool isText(std::uint32_t type) {
    return type == panel::registry::typeText || type == panel::registry::typeExpandText ||
           type == panel::registry::typeTexts;
}

// Returns the place of the bracket that ends a key in a line such as "[KEY] ; comment". Returns npos if the line has
// none, or if it is not clear: a key may contain brackets and semicolons, and so may a comment.
std::size_t endOfKey(std::string_view line) {
    const std::size_t last = line.rfind(']');
    for (std::size_t close = line.find(']'); close < last; close = line.find(']', close + 1))
        if (line[line.find_first_not_of(blanks, close + 1)] == ';')
            return std::string_view::npos;
    return last;
}

// Reads a file line by line. All functions throw std::runtime_error without the number of the line.
class Reader {
public:
    explicit Reader(std::string_view file)
        : wide(file.starts_with(byteOrderMark)), rest(file.substr(wide ? byteOrderMark.size() : 0)) {}

    std::size_t lineNumber() const {
        return number;
    }

    std::vector<RegistryChange> read() {
        const bool some = nextLine();
        line = line.substr(0, line.find_last_not_of(blanks) + 1);
        ansiData = line == ansiHead;
        if (!some || (!ansiData && line != unicodeHead))
            throw std::runtime_error("a registry file begins with \"REGEDIT4\" or \"" + std::string(unicodeHead) +
                                     "\", in ANSI or UTF-16 LE");
        std::vector<RegistryChange> changes;
        while (nextLine()) {
            if (atEnd())
                continue;
            textBegin = 0;
            if (line.front() == '[')
                changes.push_back(key());
            else if (changes.empty() || changes.back().removed)
                throw std::runtime_error(
                    "a value without a key: a line such as [HKEY_LOCAL_MACHINE\\init] comes first");
            else
                changes.back().values.push_back(value());
        }
        return changes;
    }

private:
    // Decodes the next line into `current`.
    bool nextLine() {
        ++number;
        if (rest.empty())
            return false;
        const std::string_view lineEnd = wide ? std::string_view("\n\0", 2) : std::string_view("\n", 1);
        std::size_t end = rest.find(lineEnd);
        while (wide && end != std::string_view::npos && end % 2 != 0)
            end = rest.find(lineEnd, end + 1);
        const std::string_view taken = rest.substr(0, end);
        rest.remove_prefix(std::min(rest.size(), taken.size() + lineEnd.size()));
        const Bytes bytes(taken.begin(), taken.end());
        Value decoded{{}, panel::registry::typeText, wide ? bytes : widened(bytes)};
        decoded.data.insert(decoded.data.end(), 2, 0);
        if (!panel::registry::textOf(decoded, current))
            throw std::runtime_error(wide ? "not text in UTF-16" : "not text");
        lineBreak = current.ends_with('\r') ? "\r\n" : "\n";
        line = std::string_view(current).substr(0, current.size() + 1 - lineBreak.size());
        return true;
    }

    // Skips blanks. Returns whether the line ends here, or a comment follows.
    bool atEnd() {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        return line.empty() || line.front() == ';';
    }

    bool take(std::string_view expected) {
        const bool found = line.starts_with(expected);
        line.remove_prefix(found ? expected.size() : 0);
        return found;
    }

    void expectEnd() {
        if (!atEnd())
            throw std::runtime_error(
                "not understood: " + std::string(line) +
                (textBegin ? ", behind a text that begins in line " + std::to_string(textBegin) : ""));
    }

    // Takes a hexadecimal number.
    std::uint32_t hexadecimal(std::size_t mostDigits) {
        std::uint32_t taken = 0;
        const char* const begin = line.data();
        const auto [end, error] = std::from_chars(begin, begin + std::min(line.size(), mostDigits), taken, 16);
        if (error != std::errc())
            throw std::runtime_error("not a hexadecimal number: \"" + std::string(line) + '"');
        line.remove_prefix(static_cast<std::size_t>(end - begin));
        return taken;
    }

    RegistryChange key() {
        const std::size_t close = endOfKey(line);
        if (close == std::string_view::npos)
            throw std::runtime_error(line.find(']') == close ? "the key has no closing bracket"
                                                             : "a comment behind a key must not contain a "
                                                               "closing bracket (give it a line of its own)");
        RegistryChange change;
        change.removed = line.starts_with("[-");
        const std::size_t begin = change.removed ? 2 : 1;
        change.path = fullPath(std::string(line.substr(begin, close - begin)));
        checkExpressible(change.path, {});
        if (change.removed && change.path.find('\\') == std::string::npos)
            throw std::runtime_error(change.path + " is a root and stays (name a key below it)");
        line.remove_prefix(close + 1);
        expectEnd();
        return change;
    }

    // Takes a text in quotation marks, which may go on in the next lines.
    std::string quoted() {
        const std::size_t begin = number;
        std::string text;
        line.remove_prefix(1);
        while (!take("\"")) {
            if (line.empty()) {
                text += lineBreak;
                textBegin = begin;
                if (nextLine())
                    continue;
                number = begin;
                throw std::runtime_error("the text has no closing quotation mark");
            }
            if (take("\\") && !line.starts_with('\\') && !line.starts_with('"'))
                throw std::runtime_error("in quotation marks a backslash is written as \\\\");
            text += line.front();
            line.remove_prefix(1);
        }
        return text;
    }

    RegistryChange::ValueChange value() {
        RegistryChange::ValueChange change;
        if (!take("@"))
            change.value.name = line.front() == '"' ? quoted() : throw std::runtime_error("neither a key nor a value");
        checkName(change.value.name);
        checkExpressible({}, change.value.name);
        atEnd(); // skips blanks
        if (!take("="))
            throw std::runtime_error("\"=\" is missing behind the value's name");
        atEnd();
        if (line.starts_with('"'))
            change.value = panel::registry::textValue(change.value.name, quoted());
        else if (take("dword:"))
            change.value = panel::registry::numberValue(change.value.name, hexadecimal(8));
        else if (take("hex"))
            readBytes(change.value);
        else if (take("-"))
            change.removed = true;
        else
            throw std::runtime_error("not a value's data: \"" + std::string(line) + "\" (\"text\", dword:, hex: or -)");
        expectEnd();
        return change;
    }

    // Reads what follows "hex", with its continuation lines.
    void readBytes(Value& value) {
        if (take("(")) {
            value.type = hexadecimal(8);
            if (!take(")"))
                throw std::runtime_error("the type has no closing parenthesis");
        }
        if (!take(":"))
            throw std::runtime_error("\":\" is missing behind the type");
        for (bool more = !atEnd(); more;) {
            if (take("\\")) {
                expectEnd();
                if (!nextLine())
                    throw std::runtime_error("the file ends behind a line that is continued");
                if (atEnd())
                    throw std::runtime_error("the line before is continued, but no byte follows");
                continue;
            }
            const std::size_t before = line.size();
            value.data.push_back(static_cast<std::uint8_t>(hexadecimal(2)));
            const bool whole = before - line.size() == 2;
            more = !atEnd();
            const bool comma = take(",");
            if (more && !comma && !line.starts_with('\\'))
                throw std::runtime_error("a comma is missing behind a byte");
            if (!whole)
                throw std::runtime_error("a byte has two digits");
            if (comma && atEnd())
                throw std::runtime_error("no byte follows the comma");
        }
        if (ansiData && isText(value.type))
            value.data = widened(value.data);
    }

    const bool wide;
    std::string_view rest; // the lines that are not read yet
    std::string current; // the line in UTF-8
    std::string_view line; // what is left of it
    std::string_view lineBreak; // what ends the line
    std::size_t number = 0;
    std::size_t textBegin = 0; // number of the line in which the text of several lines begins; 0: there is none
    bool ansiData = false;
};

// Writes a file line by line.
class Writer {
public:
    explicit Writer(bool narrowed) : ansi(narrowed), bytes(ansi ? "" : byteOrderMark) {
        add(std::string(ansi ? ansiHead : unicodeHead));
    }

    void add(const std::string& path, const Key& key) {
        checkExpressible(path, {});
        add("");
        add('[' + path + ']');
        for (const Value& value : key.values)
            add(value);
        for (const Key& below : key.keys)
            add(path + '\\' + below.name, below);
    }

    const std::string& content() const {
        return bytes;
    }

private:
    // Adds a line.
    void add(const std::string& line) {
        Bytes encoded = panel::registry::textValue({}, line + "\r\n").data;
        encoded.erase(encoded.end() - 2, encoded.end()); // without the terminating zero
        Bytes narrowed;
        if (ansi && !narrow(encoded, narrowed))
            throw std::runtime_error("ANSI lacks a character of this line: " + line + " (leave out --ansi)");
        const Bytes& added = ansi ? narrowed : encoded;
        bytes.append(added.begin(), added.end());
    }

    void add(const Value& value) {
        checkExpressible({}, value.name);
        const std::string name = value.name.empty() ? "@=" : quoted(value.name) + '=';
        std::string text;
        if (value.type == panel::registry::typeText && panel::registry::textOf(value, text) &&
            text.find_first_of("\r\n") == std::string::npos)
            return add(name + quoted(text));
        char number[24];
        if (value.type == panel::registry::typeNumber && value.data.size() == 4) {
            std::snprintf(number, sizeof number, "dword:%02x%02x%02x%02x", value.data[3], value.data[2], value.data[1],
                          value.data[0]);
            return add(name + number);
        }
        Bytes data;
        if (!ansi || !isText(value.type))
            data = value.data;
        else if (!narrow(value.data, data))
            throw std::runtime_error("ANSI cannot express the value \"" + value.name + "\" (leave out --ansi)");
        std::snprintf(number, sizeof number,
                      value.type == panel::registry::typeBinary ? "hex:" : "hex(%x):", value.type);
        addBytes(name + number, data);
    }

    // Adds bytes in lines of at most 80 characters, unless the name alone is longer.
    void addBytes(std::string line, const Bytes& data) {
        constexpr std::size_t most = 80;
        char digits[4];
        for (std::size_t at = 0; at < data.size(); ++at) {
            const bool last = at + 1 == data.size();
            if (line.size() + sizeof "00,\\" - 1 > most && at > 0) {
                add(line + '\\');
                line = "  ";
            }
            std::snprintf(digits, sizeof digits, last ? "%02x" : "%02x,", data[at]);
            line += digits;
        }
        add(line);
    }

    static std::string quoted(const std::string& text) {
        std::string result = "\"";
        for (const char character : text) {
            if (character == '"' || character == '\\')
                result += '\\';
            result += character;
        }
        return result + '"';
    }

    const bool ansi;
    std::string bytes;
};

} // namespace

void checkExpressible(const std::string& key, const std::string& value) {
    if ((key + value).find_first_of("\r\n") != std::string::npos)
        throw std::runtime_error("a registry file cannot express a name with a line end: \"" + key + value + '"');
    if (endOfKey('[' + key + ']') == std::string::npos)
        throw std::runtime_error("a registry file cannot express a key's name with \"];\": \"" + key + '"');
}

std::vector<RegistryChange> parseRegistryFile(std::string_view bytes) {
    Reader reader(bytes);
    try {
        return reader.read();
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("line " + std::to_string(reader.lineNumber()) + ": " + error.what());
    }
}

void merge(Tree& tree, const std::vector<RegistryChange>& changes) {
    for (const RegistryChange& change : changes) {
        if (change.removed) {
            tree.remove(change.path);
            continue;
        }
        Key* key = tree.make(change.path);
        for (const auto& [value, removed] : change.values) {
            if (removed)
                key->values.remove(value.name);
            else
                key->set(value);
        }
    }
}

std::string formatRegistryFile(const Tree& tree, const std::string& path, bool ansi) {
    Writer writer(ansi);
    if (!path.empty())
        writer.add(path, *tree.find(path));
    else
        for (const Key& root : tree.roots())
            writer.add(root.name, root);
    return writer.content();
}

} // namespace tool
