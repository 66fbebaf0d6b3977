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

// Reads the second pair of flags of a restore, which is deliberately stricter than the first pair: only "1" is true.
bool isOne(const XMLElement& element, const char* name, bool missing) {
    const char* text = element.Attribute(name);
    return text == nullptr ? missing : std::strcmp(text, "1") == 0;
}

// The library would write "true" and "false"; the document holds "1" and "0".
void setFlag(XMLElement& element, const char* name, bool value) {
    element.SetAttribute(name, value ? "1" : "0");
}

void writeRestore(XMLElement& root, const RestoreRequest& request) {
    XMLElement& restore = *root.InsertNewChildElement("Restore");
    setFlag(restore, "InProgress", request.inProgress);
    // A request that is not in progress needs no details.
    if (request.repositoryPath.empty() || !request.inProgress) {
        return;
    }
    restore.SetAttribute("RepositoryPath", toUtf8(request.repositoryPath).c_str());
    setFlag(restore, "Force", request.force);
    // These two flags are only written if they differ from their defaults.
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
    // The log level stays 0: a document that cannot be read counts as empty.
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
    // Deliberate: a "Restore" without "InProgress" keeps the value of the "Restore" before it.
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
    // Deliberate: the loop never ends at an element without "Name". The helper never writes such an element.
    while (directory != nullptr) {
        if (const char* name = directory->Attribute("Name")) {
            cleanupDirectories.push_back(toWide(name));
            directory = directory->NextSiblingElement("Directory");
        }
    }
}

void HelperSettings::readRestore(const XMLElement& restore) {
    const char* repositoryPath = restore.Attribute("RepositoryPath");
    const XMLElement* components = restore.FirstChildElement("Components");
    // An incomplete request is dropped. The next `save` removes it from the document.
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
        // Deliberate: the components after one without a name are lost.
        if (name == nullptr) {
            break;
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
