// The registry. A handle to an open key refers to an object whose name is the key's path.
#include "platform/panel/Registry.h"
#include "platform/panel/Gate.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Objects.h"

#include <cstring>
#include <exception>

using namespace panel;
using registry::Copy;
using registry::Key;
using registry::maxNameLength;
using registry::Tree;
using registry::Value;

namespace {

constexpr std::string_view roots[] = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE", "HKEY_USERS"};

// Returns a key handle for the trace: a root as its name.
trace::Word shown(HKEY key) {
    const std::uint32_t number = numberOf(key) - numberOf(HKEY_CLASSES_ROOT);
    trace::Word result;
    if (number < std::size(roots))
        result.text = roots[number];
    else
        trace::addHandle(result.text, reinterpret_cast<std::uintptr_t>(key));
    return result;
}

// Returns the path of an open key or a root, or "" for an invalid handle. Needs the lock.
std::string pathOf(Gate& gate, HKEY key) {
    const std::uint32_t number = numberOf(key);
    if (number - numberOf(HKEY_CLASSES_ROOT) < std::size(roots))
        return std::string(roots[number - numberOf(HKEY_CLASSES_ROOT)]);
    const Slot slot = objects::resolve(gate.image(), gate.process(), number);
    return slot && objects::at(gate.image(), slot).type == ObjectType::key ? objects::at(gate.image(), slot).name : "";
}

// Returns the path of a subkey, or "" if one of its names is empty or too long, or if the key lies too deep.
std::string below(const std::string& path, LPCWSTR subkey) {
    std::string names = toUtf8(subkey);
    if (names.empty())
        return path;
    std::string_view rest = names;
    while (true) {
        const auto end = rest.find('\\');
        const std::string_view name = rest.substr(0, end);
        if (name.empty() || characterCount(name) > maxNameLength)
            return {};
        if (end == std::string_view::npos)
            break;
        rest.remove_prefix(end + 1);
    }
    const std::string whole = path + '\\' + names;
    const bool tooDeep = std::count(whole.begin(), whole.end(), '\\') > registry::maxDepth;
    return tooDeep || whole.size() >= sizeof ObjectRecord::name ? std::string() : whole;
}

// Returns whether the key or one of its subkeys is open in any process.
bool isOpen(const Image& image, const std::string& path) {
    const std::string folded = fold(path);
    // The separator keeps "init" from matching "initial".
    for (const ObjectRecord& object : usedObjects(image)) {
        if (object.type != ObjectType::key)
            continue;
        const std::string other = fold(object.name);
        if (other == folded || other.starts_with(folded + '\\'))
            return true;
    }
    return false;
}

LONG open(Gate& gate, const std::string& path, HKEY* key) {
    const Slot object = objects::make(gate.image(), ObjectType::key);
    const std::uint32_t handle = object ? objects::openHandle(gate.image(), gate.process(), object) : 0;
    if (!handle) {
        if (object)
            objects::at(gate.image(), object).type = ObjectType::free;
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    copyText(objects::at(gate.image(), object).name, path);
    *key = reinterpret_cast<HKEY>(handleOf(handle));
    gate.shows(*key);
    return ERROR_SUCCESS;
}

// Runs an action on the registry under the lock. Stores the registry if the action succeeds.
template<class Action>
LONG withTree(Gate& gate, HKEY key, bool changes, Action action) {
    const Lock lock(gate.image());
    const std::string path = pathOf(gate, key);
    if (path.empty())
        return ERROR_INVALID_HANDLE;
    try {
        Tree tree = registry::load(gate.runtime.directory(), Copy::now);
        const LONG result = action(tree, path);
        if (changes && result == ERROR_SUCCESS)
            registry::store(gate.runtime.directory(), Copy::now, tree);
        return result;
    } catch (const std::exception&) { // somebody has edited the file badly while the panel was on
        return ERROR_REGISTRY_CORRUPT;
    }
}

template<class Action>
LONG withKey(Gate& gate, HKEY key, bool changes, Action action) {
    return withTree(gate, key, changes, [&](Tree& tree, const std::string& path) -> LONG {
        Key* found = tree.find(path);
        // The key may have gone while it was open: a person can edit the file.
        return found ? action(*found) : ERROR_KEY_DELETED;
    });
}

// Copies a name into a buffer of *length characters, including the terminating zero. Then *length is the length without
// the zero.
LONG giveName(const std::string& name, LPWSTR buffer, DWORD* length) {
    wchar_t wide[maxNameLength * 2 + 1];
    const std::size_t needed = toWide(name, wide, std::size(wide));
    if (!buffer || !length)
        return ERROR_INVALID_PARAMETER;
    if (needed >= *length)
        return ERROR_MORE_DATA;
    std::memcpy(buffer, wide, (needed + 1) * sizeof(wchar_t));
    *length = static_cast<DWORD>(needed);
    return ERROR_SUCCESS;
}

LONG giveData(const Value& value, DWORD* type, BYTE* data, DWORD* size) {
    if (type)
        *type = value.type;
    if (!size)
        return data ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
    // The size is stored even on failure, so that the caller can get a larger buffer.
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (!data)
        return ERROR_SUCCESS;
    if (room < *size)
        return ERROR_MORE_DATA;
    std::copy(value.data.begin(), value.data.end(), data);
    return ERROR_SUCCESS;
}

} // namespace

LONG RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, DWORD access, HKEY* opened) noexcept {
    Gate gate(Function::RegOpenKeyExW, shown(key), subkey, options, trace::Hex{access});
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withTree(gate, key, false, [&](Tree& tree, const std::string& path) -> LONG {
        const std::string wanted = below(path, subkey);
        return !wanted.empty() && tree.find(wanted) ? open(gate, wanted, opened) : ERROR_FILE_NOT_FOUND;
    }));
}

LONG RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR, DWORD options, DWORD access,
                     SECURITY_ATTRIBUTES*, HKEY* opened, DWORD* disposition) noexcept {
    Gate gate(Function::RegCreateKeyExW, shown(key), subkey, options, trace::Hex{access});
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withTree(gate, key, true, [&](Tree& tree, const std::string& path) -> LONG {
        const std::string wanted = below(path, subkey);
        if (wanted.empty() || reserved)
            return ERROR_INVALID_PARAMETER;
        const bool existed = tree.find(wanted);
        tree.make(wanted);
        if (disposition)
            *disposition = existed ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
        return open(gate, wanted, opened);
    }));
}

LONG RegCloseKey(HKEY key) noexcept {
    Gate gate(Function::RegCloseKey, shown(key));
    if (gate.faulted())
        return gate.fault<LONG>();
    const Lock lock(gate.image());
    if (pathOf(gate, key).empty())
        return gate.done<LONG>(ERROR_INVALID_HANDLE);
    objects::closeHandle(gate.image(), gate.process(), numberOf(key)); // does nothing for a root
    return gate.done<LONG>(ERROR_SUCCESS);
}

LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) noexcept {
    Gate gate(Function::RegQueryValueExW, shown(key), name);
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withKey(gate, key, false, [&](const Key& found) -> LONG {
        const Value* value = found.values.find(toUtf8(name));
        if (reserved)
            return ERROR_INVALID_PARAMETER;
        return value ? giveData(*value, type, data, size) : ERROR_FILE_NOT_FOUND;
    }));
}

LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) noexcept {
    Gate gate(Function::RegSetValueExW, shown(key), name, type, trace::Bytes{data, size});
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withKey(gate, key, true, [&](Key& found) -> LONG {
        const std::string text = toUtf8(name);
        if (reserved || (size && !data) || characterCount(text) > maxNameLength)
            return ERROR_INVALID_PARAMETER;
        found.set({text, type, {data, data + size}});
        return ERROR_SUCCESS;
    }));
}

LONG RegDeleteKeyW(HKEY key, LPCWSTR subkey) noexcept {
    Gate gate(Function::RegDeleteKeyW, shown(key), subkey);
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withTree(gate, key, true, [&](Tree& tree, const std::string& path) -> LONG {
        const std::string wanted = below(path, subkey);
        if (wanted.empty() || wanted == path)
            return ERROR_INVALID_PARAMETER;
        if (!tree.find(wanted))
            return ERROR_FILE_NOT_FOUND;
        if (isOpen(gate.image(), wanted))
            return ERROR_ACCESS_DENIED;
        tree.remove(wanted);
        return ERROR_SUCCESS;
    }));
}

LONG RegDeleteValueW(HKEY key, LPCWSTR name) noexcept {
    Gate gate(Function::RegDeleteValueW, shown(key), name);
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withKey(gate, key, true, [&](Key& found) -> LONG {
        return found.values.remove(toUtf8(name)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    }));
}

LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, LPWSTR, DWORD*,
                   FILETIME*) noexcept {
    Gate gate(Function::RegEnumKeyExW, shown(key), index);
    if (gate.faulted())
        return gate.fault<LONG>();
    const LONG result = withKey(gate, key, false, [&](const Key& found) -> LONG {
        if (reserved)
            return ERROR_INVALID_PARAMETER;
        return index < found.keys.size() ? giveName(found.keys[index].name, name, length) : ERROR_NO_MORE_ITEMS;
    });
    if (result == ERROR_SUCCESS)
        gate.shows(static_cast<const wchar_t*>(name));
    return gate.done(result);
}

LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, DWORD* type, BYTE* data,
                   DWORD* size) noexcept {
    Gate gate(Function::RegEnumValueW, shown(key), index);
    if (gate.faulted())
        return gate.fault<LONG>();
    const LONG result = withKey(gate, key, false, [&](const Key& found) -> LONG {
        if (reserved)
            return ERROR_INVALID_PARAMETER;
        if (index >= found.values.size())
            return ERROR_NO_MORE_ITEMS;
        if (const LONG failure = giveName(found.values[index].name, name, length))
            return failure;
        return giveData(found.values[index], type, data, size);
    });
    if (result == ERROR_SUCCESS)
        gate.shows(static_cast<const wchar_t*>(name));
    return gate.done(result);
}

LONG RegFlushKey(HKEY key) noexcept {
    Gate gate(Function::RegFlushKey, shown(key));
    if (gate.faulted())
        return gate.fault<LONG>();
    return gate.done(withTree(gate, key, false, [&](Tree&, const std::string& path) -> LONG {
        registry::flush(gate.runtime.directory(), path.substr(0, path.find('\\')));
        return ERROR_SUCCESS;
    }));
}
