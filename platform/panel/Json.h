// JSON for the simulated panel's files and for the output of its command. Members keep the order in which they were
// added. Json.cpp compiles the reader and the writer once, since they are the library's most expensive templates.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace panel {

using Json = nlohmann::ordered_json;

// Reads a document. If the text is not JSON, throws a std::exception whose text names the place. `receive` gets each
// part of the document as soon as it is complete; if it returns false, the result lacks this part.
Json parseJson(const std::string& text, const Json::parser_callback_t& receive = nullptr);

// Returns the document as text, without a line end. `indent` is the number of spaces per level; with a negative number
// the text is one line. Invalid UTF-8 is replaced.
std::string jsonText(const Json& json, int indent = 2);

} // namespace panel
