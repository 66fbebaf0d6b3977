// The tag library. The tags are the files in devices/tags.
#include "platform/panel/Gate.h"
#include "platform/panel/api/DriverFiles.h"

#include <tagUserAPI.h>

#include <cstring>

using namespace panel;

namespace {

// Error codes. Those of the library are unknown, so these are the platform's.
constexpr DWORD notOpen = ERROR_NOT_READY;
constexpr DWORD noSuchTag = ERROR_FILE_NOT_FOUND;
constexpr DWORD broken = ERROR_GEN_FAILURE;

std::uint32_t openings = 0; // unmatched TAG_Open calls of this process; needs the lock

// Runs a function of the library as the device behaves now. `work` returns an error code.
template<class Work>
BOOL call(Gate& gate, Function function, DWORD* error, bool opens, Work work) {
    const std::string_view name = facts(function).name;
    if (gate.faulted()) {
        *error = facts(function).lastError;
        return gate.fault<BOOL>();
    }
    Lock lock(gate.image());
    DWORD code = 0;
    bool done = false;
    try {
        const DeviceState state = behavesAs(gate, lock, "tags", name, code);
        if (!code) {
            code = openings || opens ? work(Devices(gate.runtime.directory())) : notOpen;
            done = code == 0;
        }
        const Behaviour behaviour = state.behaviour(name);
        if (done && behaviour.kind == Behaviour::Kind::code)
            code = behaviour.number;
    } catch (const std::exception&) { // a file cannot be read or written
        code = broken;
    }
    *error = code;
    return done ? gate.done(TRUE) : gate.fails(FALSE, code);
}

} // namespace

BOOL TAG_GetDBsize(DWORD* bytes, DWORD* error) noexcept {
    Gate gate(Function::TAG_GetDBsize);
    return call(gate, Function::TAG_GetDBsize, error, false, [&](const Devices& devices) {
        *bytes = 0;
        for (const auto& [id, content] : devices.tags())
            *bytes += static_cast<DWORD>(content.size());
        gate.shows(*bytes);
        return 0;
    });
}

BOOL TAG_Open(DWORD* error) noexcept {
    Gate gate(Function::TAG_Open);
    return call(gate, Function::TAG_Open, error, true, [](const Devices&) {
        ++openings;
        return 0;
    });
}

BOOL TAG_Close(DWORD* error) noexcept {
    Gate gate(Function::TAG_Close);
    return call(gate, Function::TAG_Close, error, false, [](const Devices&) {
        --openings;
        return 0;
    });
}

BOOL TAG_Format(DWORD* error) noexcept {
    Gate gate(Function::TAG_Format);
    return call(gate, Function::TAG_Format, error, false, [](const Devices& devices) {
        for (const auto& [id, content] : devices.tags())
            devices.removeTag(id);
        return 0;
    });
}

BOOL TAG_Get_Valid_Ids_Nr(DWORD* count, DWORD* error) noexcept {
    Gate gate(Function::TAG_Get_Valid_Ids_Nr);
    return call(gate, Function::TAG_Get_Valid_Ids_Nr, error, false, [&](const Devices& devices) {
        *count = static_cast<DWORD>(devices.tags().size());
        gate.shows(*count);
        return 0;
    });
}

BOOL TAG_Get_Data(DWORD id, DWORD* size, void* buffer, DWORD* error) noexcept {
    Gate gate(Function::TAG_Get_Data, id, *size);
    return call(gate, Function::TAG_Get_Data, error, false, [&](const Devices& devices) {
        const std::optional<std::string> content = devices.tag(id);
        if (!content)
            return noSuchTag;
        const std::size_t copied = std::min<std::size_t>(*size, content->size());
        if (copied)
            std::memcpy(buffer, content->data(), copied);
        *size = static_cast<DWORD>(content->size());
        gate.shows(*size);
        gate.shows(trace::Bytes{buffer, copied});
        return DWORD{0};
    });
}

BOOL TAG_Set_Data(DWORD id, DWORD size, const void* data, DWORD* error) noexcept {
    Gate gate(Function::TAG_Set_Data, id, trace::Bytes{data, size});
    return call(gate, Function::TAG_Set_Data, error, false, [&](const Devices& devices) {
        devices.setTag(id, {static_cast<const char*>(data), size});
        return 0;
    });
}

BOOL TAG_Delete(DWORD id, DWORD* error) noexcept {
    Gate gate(Function::TAG_Delete, id);
    return call(gate, Function::TAG_Delete, error, false,
                [&](const Devices& devices) { return devices.removeTag(id) ? DWORD{0} : noSuchTag; });
}
