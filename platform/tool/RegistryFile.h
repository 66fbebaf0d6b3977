// Registry files (".reg"): the text in which registries of the platform are moved.
//
//     Windows Registry Editor Version 5.00
//
//     [HKEY_LOCAL_MACHINE\init] ; a comment      creates the key
//     @="text"                                   the default value; a text may have several lines
//     "Launch61"="\\Windows\\Helper.exe"         \\ stands for a backslash, \" for a quotation mark
//     "Number"=dword:0000000a
//     "Bytes"=hex:32,00,\                        bytes of REG_BINARY; a backslash at the end continues the line
//       0a
//     "Texts"=hex(7):61,00,00,00,00,00           bytes of the type 7; the type is hexadecimal
//     "Gone"=-                                   deletes the value
//     [-HKEY_CURRENT_USER\Old]                   deletes the key with its subkeys
//     ; a comment
//
// Such a file is UTF-16 LE with a byte order mark. A file that begins with "REGEDIT4" is ANSI (code page 1252), and the
// bytes of text in it (types 1, 2 and 7) are ANSI, too. The reader takes both beginnings in both encodings, and lines
// that end with LF or CR LF. A text of several lines keeps the file's line ends; the writer writes it as bytes. A
// comment behind a key must not contain a closing bracket, since a key's name may contain brackets and semicolons.
#pragma once

#include "platform/panel/Registry.h"

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// A key of a registry file with the changes of its values.
struct RegistryChange {
    struct ValueChange {
        panel::registry::Value value;
        bool removed = false;
    };
    std::string path; // with the full name of its root
    bool removed = false;
    std::vector<ValueChange> values = {};
};

// Throws std::runtime_error if a registry file cannot express the name of a key or value. A program may still make it.
void checkExpressible(const std::string& key, const std::string& value);

// Reads the bytes of a file. Throws std::runtime_error with "line N: " and the reason if the file is malformed.
std::vector<RegistryChange> parseRegistryFile(std::string_view bytes);

// Merges the changes into a registry, in their order.
void merge(panel::registry::Tree& tree, const std::vector<RegistryChange>& changes);

// Returns the bytes of a file with a key and its subkeys. `path` is the key's path with the full name of its root; ""
// stands for all roots. Throws std::runtime_error if the file cannot express a name or a text.
std::string formatRegistryFile(const panel::registry::Tree& tree, const std::string& path, bool ansi);

} // namespace tool
