// Checks the names of keys and values that a user has written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

// Returns the path with the full name of its root and without a trailing separator. Throws Misuse if the registry
// cannot have such a key.
std::string fullPath(std::string path);

// Throws Misuse if the name of a key or value is too long.
void checkName(const std::string& name);

// Returns the place of the bracket that ends a key in a line of a registry file, such as "[KEY] ; comment". Returns
// npos if the line has none, or if it is not clear: a key may contain brackets and semicolons, and so may a comment.
std::size_t endOfKey(std::string_view line);

// Throws Misuse if a registry file could not express a new key or value. A program may still make it.
void refuseInexpressible(const std::string& key, const std::string& value);

} // namespace tool
