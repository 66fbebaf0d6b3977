#include "app/HelperSettings.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Text.h"
#include "OrvaUtils/Xml/DocumentFile.h"
#include "app/Paths.h"

#include <algorithm>
#include <cstring>
#include <tinyxml2.h>

using OrvaUtils::toUtf8;
using OrvaUtils::toWide;
using tinyxml2::XMLElement;

namespace {

constexpr std::int32_t DEFAULT_LOG_LEVEL = 2;

// The restore's second pair of flags, deliberately stricter than the first: nothing but "1" is true.
bool isOne(const XMLElement& element, const char* name, bool missing) {
    const char* text = element.Attribute(name);
    return text == nullptr ? missing : std::strcmp(text, "1") == 0;
}

// The library would write "true" and "false".
void setFlag(XMLElement& element, const char* name, bool value) {
    element.SetAttribute(name, value ? "1" : "0");
}

void writeRestore(XMLElement& root, const RestoreRequest& request) {
    XMLElement& restore = *root.InsertNewChildElement("Restore");
    setFlag(restore, "InProgress", request.inProgress);
    if (request.repositoryPath.empty() || !request.inProgress) {
        return;
    }
    restore.SetAttribute("RepositoryPath", toUtf8(request.repositoryPath).c_str());
    setFlag(restore, "Force", request.force);
    if (!request.ignoreTarvexCpl) {
        setFlag(restore, "IgnoreTarvexCpl", false);
    }
    if (request.deleteOsrAfterRestore) {
        setFlag(restore, "DeleteOsrAfterRestore", true);
    }
    XMLElement& components = *restore.InsertNewChildElement("Components");
    for (const std::wstring& component : request.components) {
        components.InsertNewChildElement("Component")->SetAttribute("Name", toUtf8(component).c_str());
    }
}

} // namespace

HelperSettings& HelperSettings::instance() {
    static HelperSettings settings;
    return settings;
}

HelperSettings::HelperSettings()
    : path(OrvaUtils::IO::getFileSystem().combinePath(Paths::INSTALLATION_DIRECTORY, L"config.xml")) {
    if (!OrvaUtils::IO::getFileSystem().isFile(path)) {
        logLevel = DEFAULT_LOG_LEVEL;
        return;
    }
    tinyxml2::XMLDocument document;
    if (!OrvaUtils::Xml::loadDocument(document, path)) {
        return;
    }
    if (const XMLElement* root = document.FirstChildElement("OrvaTarvex")) {
        read(*root);
    }
}

void HelperSettings::read(const XMLElement& root) {
    if (const XMLElement* settings = root.FirstChildElement("Settings")) {
        readSettings(*settings);
    }
    // Deliberate: an element that does not say whether it is in progress is as the one before it.
    bool inProgress = false;
    for (const XMLElement* restore = root.FirstChildElement("Restore"); restore != nullptr;
         restore = restore->NextSiblingElement("Restore")) {
        restore->QueryBoolAttribute("InProgress", &inProgress);
        if (inProgress) {
            readRestore(*restore);
        }
    }
}

void HelperSettings::readSettings(const XMLElement& settings) {
    if (const XMLElement* parameters = settings.FirstChildElement("Parameters")) {
        logLevel = parameters->IntAttribute("LogLevel", DEFAULT_LOG_LEVEL);
    }
    const XMLElement* directories = settings.FirstChildElement("CleanupDirectories");
    if (directories == nullptr) {
        return;
    }
    const XMLElement* directory = directories->FirstChildElement("Directory");
    while (directory != nullptr) {
        // Deliberate: the reader stays for ever on an element without a name. The helper never writes one.
        if (const char* name = directory->Attribute("Name")) {
            cleanupDirectories.push_back(toWide(name));
            directory = directory->NextSiblingElement("Directory");
        }
    }
}

void HelperSettings::readRestore(const XMLElement& restore) {
    const char* repositoryPath = restore.Attribute("RepositoryPath");
    const XMLElement* components = restore.FirstChildElement("Components");
    if (repositoryPath == nullptr || components == nullptr) {
        return;
    }
    RestoreRequest request;
    request.inProgress = true;
    request.repositoryPath = toWide(repositoryPath);
    restore.QueryBoolAttribute("Force", &request.force);
    request.ignoreTarvexCpl = isOne(restore, "IgnoreTarvexCpl", true);
    request.deleteOsrAfterRestore = isOne(restore, "DeleteOsrAfterRestore", false);
    for (const XMLElement* component = components->FirstChildElement("Component"); component != nullptr;
         component = component->NextSiblingElement("Component")) {
        const char* name = component->Attribute("Name");
        if (name == nullptr) {
            break; // deliberate: the later ones are lost
        }
        request.components.push_back(toWide(name));
    }
    restoreRequests.push_back(request);
}

void HelperSettings::save() const {
    tinyxml2::XMLDocument document;
    document.InsertEndChild(document.NewDeclaration());
    XMLElement& root = *document.NewElement("OrvaTarvex");
    document.InsertEndChild(&root);
    root.SetAttribute("Version", "1");
    XMLElement& settings = *root.InsertNewChildElement("Settings");
    settings.InsertNewChildElement("Parameters")->SetAttribute("LogLevel", std::to_string(logLevel).c_str());
    XMLElement& directories = *settings.InsertNewChildElement("CleanupDirectories");
    for (const std::wstring& directory : cleanupDirectories) {
        directories.InsertNewChildElement("Directory")->SetAttribute("Name", toUtf8(directory).c_str());
    }
    for (const RestoreRequest& request : restoreRequests) {
        writeRestore(root, request);
    }
    OrvaUtils::Xml::saveDocument(document, path);
}

const RestoreRequest* HelperSettings::requestInProgress() const {
    const auto found = std::find_if(restoreRequests.begin(), restoreRequests.end(),
                                    [](const RestoreRequest& request) { return request.inProgress; });
    return found == restoreRequests.end() ? nullptr : &*found;
}
