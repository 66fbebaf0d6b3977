// JSON as the simulated panel's files and the answers of its command have it: members stay in the order in which they
// were added. Reading and writing are compiled once, in Json.cpp; they are most of what the library costs a compiler.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace panel {

using Json = nlohmann::ordered_json;

// Reads a document. Throws a std::exception that names the place if the text is no JSON.
Json parseJson(const std::string& text);

// The document as text, without a line feed at its end. indent: spaces a level; below zero everything stands on one
// line. Invalid UTF-8 is replaced.
std::string jsonText(const Json& json, int indent = 2);

} // namespace panel
