#include "OrvaUtils/Xml/SettingsDocument.h"

#include "OrvaUtils/Xml/DocumentFile.h"

#include <utility>

namespace OrvaUtils::Xml {

SettingsDocument::SettingsDocument(std::wstring filePath, std::string nameOfRoot)
    : path(std::move(filePath)), rootName(std::move(nameOfRoot)) {}

bool SettingsDocument::open() {
    // The pointer belongs to the old content, which the next line discards.
    settings = nullptr;
    if (!loadDocument(document, path)) {
        return false;
    }
    if (tinyxml2::XMLElement* root = document.FirstChildElement(rootName.c_str())) {
        settings = root->FirstChildElement("Settings");
    }
    return settings != nullptr;
}

void SettingsDocument::createEmpty() {
    document.Clear();
    // The file begins with the XML declaration.
    document.InsertEndChild(document.NewDeclaration());
    tinyxml2::XMLElement* root = document.NewElement(rootName.c_str());
    document.InsertEndChild(root);
    settings = root->InsertNewChildElement("Settings");
}

const tinyxml2::XMLElement* SettingsDocument::find(const char* name) const {
    return settings == nullptr ? nullptr : settings->FirstChildElement(name);
}

bool SettingsDocument::read(const char* name, bool& value) const {
    const tinyxml2::XMLElement* element = find(name);
    return element != nullptr && element->QueryBoolText(&value) == tinyxml2::XML_SUCCESS;
}

// The queries take int and unsigned. On the panel the fixed-width types are other types of the same width.
bool SettingsDocument::read(const char* name, std::int32_t& value) const {
    const tinyxml2::XMLElement* element = find(name);
    int number = 0;
    if (element == nullptr || element->QueryIntText(&number) != tinyxml2::XML_SUCCESS) {
        return false;
    }
    value = number;
    return true;
}

bool SettingsDocument::read(const char* name, std::uint32_t& value) const {
    const tinyxml2::XMLElement* element = find(name);
    unsigned number = 0;
    if (element == nullptr || element->QueryUnsignedText(&number) != tinyxml2::XML_SUCCESS) {
        return false;
    }
    value = number;
    return true;
}

void SettingsDocument::append(const char* name, const std::string& text) {
    settings->InsertNewChildElement(name)->SetText(text.c_str());
}

// The library would write "true" and "false"; the files hold "1" and "0".
void SettingsDocument::write(const char* name, bool value) {
    append(name, value ? "1" : "0");
}

void SettingsDocument::write(const char* name, std::int32_t value) {
    append(name, std::to_string(value));
}

void SettingsDocument::write(const char* name, std::uint32_t value) {
    append(name, std::to_string(value));
}

bool SettingsDocument::save() {
    return saveDocument(document, path);
}

} // namespace OrvaUtils::Xml
