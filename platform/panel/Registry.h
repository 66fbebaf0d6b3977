// The panel's registry: keys below four roots, names case-blind and case-keeping, values of raw bytes with a type. Text
// in values has 16 bits a character, little-endian.
//
//     registry/now.json     what it holds
//     registry/flash.json   what would be left of it after a power cut: what was flushed, by root
//
// Both are a flat list, key by key, for people and their editors. Booting begins with what is in flash, so an edit of a
// panel that is off belongs there; an orderly switching off flushes everything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace panel::registry {

inline constexpr std::uint32_t typeText = 1; // REG_SZ
inline constexpr std::uint32_t typeExpandText = 2;
inline constexpr std::uint32_t typeBinary = 3;
inline constexpr std::uint32_t typeNumber = 4; // little-endian
inline constexpr std::uint32_t typeBigEndianNumber = 5;
inline constexpr std::uint32_t typeTexts = 7; // REG_MULTI_SZ

using Bytes = std::vector<std::uint8_t>;

struct Value {
    std::string name; // empty: the key's default value
    std::uint32_t type = typeBinary;
    Bytes data;
};

struct Key {
    std::string name;
    std::vector<Value> values; // in the order in which they were made
    std::vector<Key> keys;

    const Value* value(std::string_view valueName) const; // null: none
    void set(Value made);
    bool removeValue(std::string_view valueName);
};

// Paths begin with a root's name: "HKEY_LOCAL_MACHINE\init".
class Tree {
public:
    Tree(); // the four roots, empty

    const std::vector<Key>& roots() const {
        return keys;
    }
    const Key* find(std::string_view path) const; // null: none
    Key* find(std::string_view path);
    Key* make(std::string_view path); // with what is missing above it; null if there is no such root
    bool remove(std::string_view path); // with all below it; a root stays
    void replaceRoot(const Key& root);

private:
    std::vector<Key> keys;
};

// A root's full name for a full or a short one ("HKLM"), case-blind; empty: it is none.
std::string_view rootNamed(std::string_view name);

// The text of a value of a text type, up to the first zero or the end; false if its bytes are not exactly one
// terminated, well-formed text.
bool textOf(const Value& value, std::string& text);
bool textsOf(const Value& value, std::vector<std::string>& texts);
Value textValue(std::string name, std::string_view text, std::uint32_t type = typeText);
Value textsValue(std::string name, const std::vector<std::string>& texts);
Value numberValue(std::string name, std::uint32_t number, std::uint32_t type = typeNumber);

// In characters, of a key's or value's name [documentation of RegCreateKeyEx].
inline constexpr std::size_t maxNameLength = 255;
inline constexpr int maxDepth = 16; // of keys below a root

std::string typeName(std::uint32_t type); // "REG_SZ"; "REG_9" for one without a name
std::uint32_t typeNamed(std::string_view name); // throws std::runtime_error
std::string hexOf(const Bytes& bytes); // "32 00"
Bytes bytesOf(std::string_view hex); // throws std::runtime_error

// The files below a panel's directory; failures are std::runtime_error. While the panel is on, the caller holds the
// kernel's lock.
enum class Copy { now, flash };
Tree load(const std::filesystem::path& panel, Copy copy);
void store(const std::filesystem::path& panel, Copy copy, const Tree& tree);
void flush(const std::filesystem::path& panel, std::string_view root); // one root's keys into flash
void flushAll(const std::filesystem::path& panel);
void fallBack(const std::filesystem::path& panel); // to what is in flash

} // namespace panel::registry
