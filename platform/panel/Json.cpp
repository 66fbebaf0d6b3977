#include "platform/panel/Json.h"

namespace panel {

Json parseJson(const std::string& text, const Json::parser_callback_t& receive) {
    return Json::parse(text, receive);
}

std::string jsonText(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace panel
