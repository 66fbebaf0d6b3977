#include "modules/usbconfig/Configuration.h"

#include "OrvaUtils/Text.h"
#include "OrvaUtils/Xml/DocumentFile.h"
#include "OrvaUtils/Xml/XmlException.h"
#include "modules/usbconfig/ConfigurationException.h"
#include "modules/usbconfig/RunProcessCommand.h"

#include <cstdio>
#include <cstring>
#include <tinyxml2.h>

using OrvaUtils::Xml::XmlException;
using tinyxml2::XMLElement;

namespace {

const char* utf8Attribute(const XMLElement& element, const char* name) {
    const char* text = element.Attribute(name);
    if (text == nullptr) {
        throw XmlException();
    }
    return text;
}

bool equal(const char* text, const char* word) {
    return std::strcmp(text, word) == 0;
}

std::wstring attribute(const XMLElement& element, const char* name) {
    return OrvaUtils::toWide(utf8Attribute(element, name));
}

// Converts pairs of hexadecimal digits. A pair that is not a number becomes 0; an odd last digit is ignored.
std::vector<std::uint8_t> hexBytes(const std::wstring& text) {
    const std::string digits = OrvaUtils::narrow(text);
    std::vector<std::uint8_t> bytes(digits.size() / 2);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        unsigned byte = 0;
        std::sscanf(digits.substr(2 * index, 2).c_str(), "%2x", &byte);
        bytes[index] = static_cast<std::uint8_t>(byte);
    }
    return bytes;
}

bool readWaitCompletion(const XMLElement& element) {
    const char* const text = utf8Attribute(element, "WaitCompletion");
    const bool waits = equal(text, "1");
    if (!waits && !equal(text, "0")) {
        throw ConfigurationException(L"Invalid WaitCompletion attribute");
    }
    return waits;
}

std::unique_ptr<ICommand> readCommand(const XMLElement& element) {
    if (!equal(element.Name(), "Command")) {
        throw ConfigurationException(L"Expected command");
    }
    if (!equal(utf8Attribute(element, "Type"), "RunProcess")) {
        throw ConfigurationException(L"Invalid command type");
    }
    auto command = std::make_unique<RunProcessCommand>();
    command->filePath = attribute(element, "FilePath");
    command->arguments = attribute(element, "Arguments");
    command->waitCompletion = readWaitCompletion(element);
    return command;
}

} // namespace

Configuration::Configuration(const std::wstring& path) : filePath(path) {
    tinyxml2::XMLDocument document;
    if (!OrvaUtils::Xml::loadDocument(document, path)) {
        throw XmlException();
    }
    const XMLElement* root = document.FirstChildElement();
    if (root == nullptr) {
        throw XmlException();
    }
    if (!equal(root->Name(), "Tarvex")) {
        throw ConfigurationException(L"Invalid root element");
    }
    for (const XMLElement* section = root->FirstChildElement(); section != nullptr;
         section = section->NextSiblingElement()) {
        readSection(*section);
    }
}

void Configuration::readSection(const XMLElement& section) {
    const char* const name = section.Name();
    if (equal(name, "Login")) {
        readLogin(section);
    } else if (equal(name, "Users")) {
        readUsers(section);
    } else if (equal(name, "Commands")) {
        readCommands(section);
    } else {
        return;
    }
    sections.insert(OrvaUtils::toWide(name));
}

void Configuration::readLogin(const XMLElement& login) {
    loginUsername = attribute(login, "Username");
    loginPassword = hexBytes(attribute(login, "Password"));
}

void Configuration::readUsers(const XMLElement& section) {
    for (const XMLElement* user = section.FirstChildElement(); user != nullptr; user = user->NextSiblingElement()) {
        std::vector<std::uint8_t> password = hexBytes(attribute(*user, "Password"));
        users[attribute(*user, "Username")] = std::move(password);
    }
}

void Configuration::readCommands(const XMLElement& section) {
    for (const XMLElement* command = section.FirstChildElement(); command != nullptr;
         command = command->NextSiblingElement()) {
        commands.push_back(readCommand(*command));
    }
}
