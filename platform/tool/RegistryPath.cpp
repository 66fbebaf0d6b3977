#include "platform/tool/RegistryPath.h"

#include "platform/panel/Registry.h"
#include "platform/panel/Text.h"
#include "platform/tool/Units.h"

#include <algorithm>

namespace tool {

namespace registry = panel::registry;

void checkName(const std::string& name) {
    if (panel::characterCount(name) > registry::maxNameLength)
        throw Misuse("a name in the registry has " + std::to_string(registry::maxNameLength) +
                     " characters at most: \"" + name + '"');
}

std::string fullPath(std::string path) {
    if (path.ends_with('\\'))
        path.pop_back();
    const auto separator = std::min(path.find('\\'), path.size());
    const std::string_view root = registry::rootNamed(std::string_view(path).substr(0, separator));
    if (root.empty())
        throw Misuse("no such root in the registry: \"" + path + "\" (such as HKEY_LOCAL_MACHINE\\init)");
    for (auto begin = separator; begin < path.size();) {
        const auto end = std::min(path.find('\\', begin + 1), path.size());
        if (end == begin + 1)
            throw Misuse("a key has an empty name: \"" + path + '"');
        checkName(path.substr(begin + 1, end - begin - 1));
        begin = end;
    }
    if (std::count(path.begin(), path.end(), '\\') > registry::maxDepth)
        throw Misuse("a key lies " + std::to_string(registry::maxDepth) + " levels below its root at most: \"" + path +
                     '"');
    return std::string(root) + path.substr(separator);
}

} // namespace tool
