#pragma once

#include <cstdint>
#include <string>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

// A settings file: a root element named after its subject, in it "Settings", in it one element a value.
//
//     <TouchBuzzer>
//         <Settings>
//             <Enabled>1</Enabled>
//
// To read: `open`, then the values. To write: `createEmpty`, then the values in their order, then `save`. For one
// thread at a time. Throws nothing but std::bad_alloc, where a document is built or a file name copied.
class SettingsDocument {
public:
    SettingsDocument(std::wstring filePath, std::string nameOfRoot);
    SettingsDocument(const SettingsDocument&) = delete;
    SettingsDocument& operator=(const SettingsDocument&) = delete;

    // Reads the file. False when it cannot be read, is no XML, or lacks one of the two outer elements.
    bool open();
    // Forgets everything and begins a document without values.
    void createEmpty();

    // The first value of that name. False, and `value` as it was, when there is none or its text is nothing of the
    // kind. As truth values the library takes numbers (0: false) and the words "true", "True", "TRUE" and the same of
    // "false".
    bool read(const char* name, bool& value) const;
    bool read(const char* name, std::int32_t& value) const;
    bool read(const char* name, std::uint32_t& value) const;

    // Appends a value: truth values as "1" and "0", numbers in decimal. Only for a document that was opened or created.
    void write(const char* name, bool value);
    void write(const char* name, std::int32_t value);
    void write(const char* name, std::uint32_t value);

    // Replaces the file. False when that fails: see saveDocument.
    bool save();

private:
    const tinyxml2::XMLElement* find(const char* name) const;
    void append(const char* name, const std::string& text);

    std::wstring path;
    std::string rootName;
    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* settings = nullptr; // of the document; null: neither opened nor created
};

} // namespace OrvaUtils::Xml
