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

template<class Items>
auto named(Items& items, std::string_view name) {
    return std::find_if(items.begin(), items.end(), [&](const auto& item) { return equalCaseBlind(item.name, name); });
}

Key* keyNamed(std::vector<Key>& keys, std::string_view name) {
    const auto found = named(keys, name);
    return found == keys.end() ? nullptr : &*found;
}

} // namespace

const Value* Key::value(std::string_view valueName) const {
    const auto found = named(values, valueName);
    return found == values.end() ? nullptr : &*found;
}

void Key::set(Value made) {
    const auto found = named(values, made.name);
    // An existing value keeps its place and the spelling of its name.
    if (found == values.end()) {
        values.push_back(std::move(made));
    } else {
        found->type = made.type;
        found->data = std::move(made.data);
    }
}

bool Key::removeValue(std::string_view valueName) {
    const auto found = named(values, valueName);
    if (found == values.end())
        return false;
    values.erase(found);
    return true;
}

Tree::Tree() {
    for (const auto& [name, shortName] : rootNames)
        keys.push_back({std::string(name), {}, {}});
}

Key* Tree::find(std::string_view path) {
    Key* key = keyNamed(keys, takeName(path));
    while (key && !path.empty())
        key = keyNamed(key->keys, takeName(path));
    return key;
}

const Key* Tree::find(std::string_view path) const {
    return const_cast<Tree*>(this)->find(path);
}

Key* Tree::make(std::string_view path) {
    Key* key = keyNamed(keys, takeName(path));
    while (key && !path.empty()) {
        const std::string_view name = takeName(path);
        Key* below = keyNamed(key->keys, name);
        key = below ? below : &key->keys.emplace_back(Key{std::string(name), {}, {}});
    }
    return key;
}

bool Tree::remove(std::string_view path) {
    const auto separator = path.rfind('\\');
    Key* above = separator == std::string_view::npos ? nullptr : find(path.substr(0, separator));
    if (!above)
        return false;
    const auto found = named(above->keys, path.substr(separator + 1));
    if (found == above->keys.end())
        return false;
    above->keys.erase(found);
    return true;
}

void Tree::replaceRoot(const Key& root) {
    if (Key* own = keyNamed(keys, root.name))
        *own = root;
}

std::string_view rootNamed(std::string_view name) {
    for (const auto& [full, shortName] : rootNames)
        if (equalCaseBlind(name, full) || equalCaseBlind(name, shortName))
            return full;
    return {};
}

} // namespace panel::registry
