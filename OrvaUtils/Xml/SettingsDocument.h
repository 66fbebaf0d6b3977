#pragma once

#include <cstdint>
#include <string>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

// A settings file in XML. The caller chooses the name of the root element. The root element contains the element
// "Settings", which contains one element for each value:
//
//     <TouchBuzzer>
//         <Settings>
//             <Enabled>1</Enabled>
//
// To read a file, call `open` and then `read` for each value. To write a file, call `createEmpty`, then `write` for
// each value in order, then `save`. Only one thread at a time may use the object. Operations report failures by
// returning false. The only exception that they throw is std::bad_alloc.
class SettingsDocument {
public:
    // Stores its arguments and does not open the file. `nameOfRoot` is the name of the root element.
    SettingsDocument(std::wstring filePath, std::string nameOfRoot);
    SettingsDocument(const SettingsDocument&) = delete;
    SettingsDocument& operator=(const SettingsDocument&) = delete;

    // Reads the file. Returns false if the file cannot be read, is not XML, or lacks the root element or "Settings".
    bool open();
    // Discards the document in memory and begins an empty one. Does not change the file.
    void createEmpty();

    // Reads the first element of this name. Returns false, and leaves `value` unchanged, if there is no such element or
    // its text cannot be converted. A bool is a whole number (0 means false, any other number true) or one of the words
    // "true", "True", "TRUE", "false", "False", "FALSE".
    bool read(const char* name, bool& value) const;
    bool read(const char* name, std::int32_t& value) const;
    bool read(const char* name, std::uint32_t& value) const;

    // Appends an element: a bool as "1" or "0", a number in decimal. Call it only after `createEmpty`, or after an
    // `open` that returned true.
    void write(const char* name, bool value);
    void write(const char* name, std::int32_t value);
    void write(const char* name, std::uint32_t value);

    // Replaces the file with the document. Returns false if the file cannot be written. The file is then unchanged, or
    // cut short if WriteFile failed (saveDocument in DocumentFile.h).
    bool save();

private:
    const tinyxml2::XMLElement* find(const char* name) const;
    void append(const char* name, const std::string& text);

    std::wstring path;
    std::string rootName;
    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* settings = nullptr; // part of `document`; null before `open` or `createEmpty`
};

} // namespace OrvaUtils::Xml
