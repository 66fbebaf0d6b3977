// Checks the names of keys and values that a user has written.
#pragma once

#include <string>

namespace tool {

// Returns the path with the full name of its root and without a trailing separator. Throws Misuse if the registry
// cannot have such a key.
std::string fullPath(std::string path);

// Throws Misuse if the name of a key or value is too long.
void checkName(const std::string& name);

// Throws Misuse if a new name or path has a line end: a registry file could not express it. A program may still make
// such a key.
void refuseLineEnds(const std::string& name);

} // namespace tool
