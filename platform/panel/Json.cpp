#include "platform/panel/Json.h"

namespace panel {

Json parseJson(const std::string& text) {
    return Json::parse(text);
}

std::string jsonText(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace panel
