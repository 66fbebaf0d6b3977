#include "platform/panel/Registry.h"

#include "platform/panel/Text.h"

#include <algorithm>

namespace panel::registry {

namespace {

constexpr std::string_view rootNames[][2] = {{"HKEY_CLASSES_ROOT", "HKCR"},
                                             {"HKEY_CURRENT_USER", "HKCU"},
                                             {"HKEY_LOCAL_MACHINE", "HKLM"},
                                             {"HKEY_USERS", "HKU"}};

// Removes the first name from a path and returns it.
std::string_view takeName(std::string_view& path) {
    const auto end = std::min(path.find('\\'), path.size());
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    return name;
}

} // namespace

void Key::set(Value made) {
    // An existing value keeps its place and the spelling of its name.
    if (Value* found = values.find(made.name)) {
        found->type = made.type;
        found->data = std::move(made.data);
    } else {
        values.add(std::move(made));
    }
}

Tree::Tree() {
    for (const auto& [name, shortName] : rootNames)
        keys.add({std::string(name), {}, {}});
}

Key* Tree::find(std::string_view path) {
    Key* key = keys.find(takeName(path));
    while (key && !path.empty())
        key = key->keys.find(takeName(path));
    return key;
}

const Key* Tree::find(std::string_view path) const {
    return const_cast<Tree*>(this)->find(path);
}

Key* Tree::make(std::string_view path) {
    Key* key = keys.find(takeName(path));
    while (key && !path.empty()) {
        const std::string_view name = takeName(path);
        Key* below = key->keys.find(name);
        key = below ? below : &key->keys.add({std::string(name), {}, {}});
    }
    return key;
}

bool Tree::remove(std::string_view path) {
    const auto separator = path.rfind('\\');
    Key* above = separator == std::string_view::npos ? nullptr : find(path.substr(0, separator));
    return above && above->keys.remove(path.substr(separator + 1));
}

void Tree::replaceRoot(const Key& root) {
    if (Key* own = keys.find(root.name))
        *own = root;
}

std::string_view rootNamed(std::string_view name) {
    for (const auto& [full, shortName] : rootNames)
        if (equalCaseBlind(name, full) || equalCaseBlind(name, shortName))
            return full;
    return {};
}

} // namespace panel::registry
