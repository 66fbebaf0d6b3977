#include "modules/buzzer/TouchBuzzerConfig.h"

#include "OrvaUtils/Xml/SettingsDocument.h"

namespace {

constexpr char TOUCH_BUZZER_ROOT[] = "TouchBuzzer";
constexpr char ENABLED[] = "Enabled";
constexpr char FREQUENCY[] = "Frequency";

} // namespace

bool TouchBuzzerConfig::read(const std::wstring& path) {
    OrvaUtils::Xml::SettingsDocument document(path, TOUCH_BUZZER_ROOT);
    return document.open() && document.read(ENABLED, enabled) && document.read(FREQUENCY, frequency);
}

bool TouchBuzzerConfig::write(const std::wstring& path) const {
    OrvaUtils::Xml::SettingsDocument document(path, TOUCH_BUZZER_ROOT);
    // The file gets only the two settings; anything else that it held is lost.
    document.createEmpty();
    document.write(ENABLED, enabled);
    document.write(FREQUENCY, frequency);
    return document.save();
}
