// The panel's registry: a tree of keys below four roots. A value holds raw bytes and a type.
//
// Names are case-insensitive and case-preserving. Text in values has 16 bits per character, little-endian.
//
//     registry/now.json     the current content
//     registry/flash.json   the content that survives a power cut: each root as it was when it was flushed last
//
// Both files are a flat list of keys, so that people can edit them. Boot copies flash.json to now.json: while the panel
// is off, edit flash.json. A clean shutdown flushes everything.
#pragma once

#include "platform/panel/NamedList.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace panel::registry {

// Types of values.
inline constexpr std::uint32_t typeText = 1; // REG_SZ
inline constexpr std::uint32_t typeExpandText = 2;
inline constexpr std::uint32_t typeBinary = 3;
inline constexpr std::uint32_t typeNumber = 4; // REG_DWORD, little-endian
inline constexpr std::uint32_t typeBigEndianNumber = 5;
inline constexpr std::uint32_t typeTexts = 7; // REG_MULTI_SZ

using Bytes = std::vector<std::uint8_t>;

// A value: raw bytes with a type.
struct Value {
    std::string name; // empty: the key's default value
    std::uint32_t type = typeBinary;
    Bytes data;
};

// A key with its values and subkeys.
struct Key {
    std::string name;
    NamedList<Value> values;
    NamedList<Key> keys;

    void set(Value made); // adds or replaces a value
};

// All keys. A path begins with the full name of a root: "HKEY_LOCAL_MACHINE\init".
class Tree {
public:
    Tree(); // four empty roots

    const NamedList<Key>& roots() const {
        return keys;
    }
    // Returns a key, or null if it does not exist.
    const Key* find(std::string_view path) const;
    Key* find(std::string_view path);
    // Returns a key and creates it with all missing keys above it. Returns null if the root does not exist.
    Key* make(std::string_view path);
    // Removes a key with all its subkeys. A root cannot be removed.
    bool remove(std::string_view path);
    // Replaces the content of the root that has the same name.
    void replaceRoot(const Key& root);

private:
    NamedList<Key> keys;
};

// Returns the full name of a root. Accepts full and short names ("HKLM"), case-insensitively. Returns "" for other
// names.
std::string_view rootNamed(std::string_view name);

// Writes the text of a value, up to the first zero or the end of the data, to `text`. Returns true only if the data are
// one well-formed text with a single terminating zero at the end.
bool textOf(const Value& value, std::string& text);
// Does the same for the list of texts in a REG_MULTI_SZ value.
bool textsOf(const Value& value, std::vector<std::string>& texts);
// Make a value from a text, a list of texts or a number.
Value textValue(std::string name, std::string_view text, std::uint32_t type = typeText);
Value textsValue(std::string name, const std::vector<std::string>& texts);
Value numberValue(std::string name, std::uint32_t number, std::uint32_t type = typeNumber);

inline constexpr std::size_t maxNameLength = 255; // characters in the name of a key or value [ms891450]
inline constexpr int maxDepth = 16; // levels of keys below a root [ms891450]

std::string typeName(std::uint32_t type); // "REG_SZ"; "REG_9" for a type without a name
std::uint32_t typeNamed(std::string_view name); // throws std::runtime_error for an unknown name
std::string hexOf(const Bytes& bytes); // "32 00"
Bytes bytesOf(std::string_view hex); // throws std::runtime_error for a malformed text

// The functions below work on the files in a panel's directory. They throw std::runtime_error. While the panel is on,
// the caller holds the kernel's lock.
enum class Copy { now, flash };
Tree load(const std::filesystem::path& panel, Copy copy);
void store(const std::filesystem::path& panel, Copy copy, const Tree& tree);
// Copies one root, or all roots, from now.json to flash.json.
void flush(const std::filesystem::path& panel, std::string_view root);
void flushAll(const std::filesystem::path& panel);
// Replaces now.json by flash.json.
void fallBack(const std::filesystem::path& panel);

} // namespace panel::registry
