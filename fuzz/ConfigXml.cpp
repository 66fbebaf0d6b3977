// Fuzzes the settings file "config.xml". Any content must be readable, and saved settings must read back unchanged.
#include "app/HelperSettings.h"
#include "fuzz/FuzzPanel.h"

#include <tinyxml2.h>

namespace {

constexpr const char* SETTINGS = "\\MMCMemory\\Tarvex\\config.xml";

// The reader deliberately loops for ever on a "Directory" without "Name", so these inputs are skipped.
bool staysForEver(const std::uint8_t* data, std::size_t size) {
    tinyxml2::XMLDocument document;
    document.Parse(reinterpret_cast<const char*>(data), size);
    tinyxml2::XMLConstHandle handle(document.FirstChildElement("OrvaTarvex"));
    const tinyxml2::XMLElement* directory = handle.FirstChildElement("Settings")
                                                .FirstChildElement("CleanupDirectories")
                                                .FirstChildElement("Directory")
                                                .ToElement();
    for (; directory != nullptr; directory = directory->NextSiblingElement("Directory")) {
        if (directory->Attribute("Name") == nullptr) {
            return true;
        }
    }
    return false;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (staysForEver(data, size)) {
        return 0;
    }
    fuzz::putFile(SETTINGS, data, size);
    HelperSettings().save(); // normalises line ends, and drops the parts of a restore that are not saved
    HelperSettings().save();
    const std::string saved = fuzz::readFile(SETTINGS);
    const HelperSettings settings;
    settings.save();
    fuzz::require(fuzz::readFile(SETTINGS) == saved, "settings that change by being saved");
    for (const RestoreRequest& request : settings.restoreRequests) {
        fuzz::require(request.inProgress, "a restore that is not in progress");
    }
    return 0;
}
