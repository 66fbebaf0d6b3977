#include "modules/screensaver/ScreenSaverConfig.h"

#include "OrvaUtils/Xml/SettingsDocument.h"

bool ScreenSaverConfig::read(const std::wstring& path) {
    OrvaUtils::Xml::SettingsDocument document(path, "ScreenSaver");
    return document.open() && document.read("Enabled", enabled) &&
           document.read("UserInactivityTimeout", userInactivityTimeout) &&
           document.read("MinLuminosityLevel", minLuminosityLevel);
}
