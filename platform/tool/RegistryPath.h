// Checks the names of keys and values that a user has written.
#pragma once

#include <string>

namespace tool {

// Returns the path with the full name of its root and without a trailing separator. Throws Misuse if the registry
// cannot have such a key.
std::string fullPath(std::string path);

// Throws Misuse if the name of a key or value is too long.
void checkName(const std::string& name);

} // namespace tool
