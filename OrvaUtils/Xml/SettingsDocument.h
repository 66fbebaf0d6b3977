#pragma once

#include <cstdint>
#include <string>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

// A settings file in XML: a root element named after its subject, a child "Settings", and one element for each value.
//
//     <TouchBuzzer>
//         <Settings>
//             <Enabled>1</Enabled>
//
// To read a file, call `open` and then `read` for each value. To write a file, call `createEmpty`, then `write` for
// each value in order, then `save`. Only one thread at a time may use the object. Failures are results; only
// std::bad_alloc is thrown.
class SettingsDocument {
public:
    // Copies its arguments and does not touch the file.
    SettingsDocument(std::wstring filePath, std::string nameOfRoot);
    SettingsDocument(const SettingsDocument&) = delete;
    SettingsDocument& operator=(const SettingsDocument&) = delete;

    // Reads the file. Returns false if the file cannot be read, is not XML, or lacks the root element or "Settings".
    bool open();
    // Discards the content and creates a document without values.
    void createEmpty();

    // Reads the first element of this name. Returns false, and leaves `value` unchanged, if there is no such element or
    // its text cannot be converted. A bool is a number (0 is false) or one of "true", "True", "TRUE", "false", "False",
    // "FALSE".
    bool read(const char* name, bool& value) const;
    bool read(const char* name, std::int32_t& value) const;
    bool read(const char* name, std::uint32_t& value) const;

    // Appends an element: a bool as "1" or "0", a number in decimal. Call it only after `open` or `createEmpty`
    // succeeded.
    void write(const char* name, bool value);
    void write(const char* name, std::int32_t value);
    void write(const char* name, std::uint32_t value);

    // Replaces the file. The result is that of `saveDocument`.
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
