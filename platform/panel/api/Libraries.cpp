// Loads libraries and looks up their functions by name.
#include "platform/panel/Devices.h"
#include "platform/panel/Gate.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"

#include <coredll.h>
#include <tagUserAPI.h>

using namespace panel;

namespace {

template<class Result, class... Arguments>
FARPROC address(Result (*function)(Arguments...) noexcept) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

struct Named {
    std::string_view name;
    FARPROC function;
};

// The lists are never destroyed: threads may still use them while the process ends.
const std::vector<Named>& coreFunctions() {
    static const auto& functions = *new std::vector<Named>{
#define COREDLL(name, how, failure, lastError) {#name, address(&::name)},
#define COREDLL_SURE(name, how) {#name, address(&::name)},
#include <coredll.inc>
    };
    return functions;
}

const std::vector<Named>& tagFunctions() {
    static const auto& functions = *new std::vector<Named>{
#define TAG_FUNCTION(name) {#name, address(&::name)},
#include <tagUserAPI.inc>
    };
    return functions;
}

struct Library {
    std::string_view name; // folded, without ".dll"
    std::string_view device; // device without which the library is missing; empty: the library always exists
    const std::vector<Named>& functions;
    std::uint32_t loads; // loads in this process; needs the lock
};

Library libraries[] = {{"coredll", "", coreFunctions(), 0}, {"taguserapi", "tags", tagFunctions(), 0}};
constexpr std::uint32_t firstModule = 0x20000;
constexpr std::uint32_t moduleDistance = 0x10000;

bool isThere(const Library& library, const std::string& root) {
    try {
        return library.device.empty() || Devices(root).has(library.device);
    } catch (const std::exception&) { // an unreadable file counts as a missing library
        return false;
    }
}

Library* libraryOf(HMODULE module) {
    std::uint32_t number = firstModule;
    for (Library& library : libraries) {
        if (numberOf(module) == number && library.loads > 0)
            return &library;
        number += moduleDistance;
    }
    return nullptr;
}

} // namespace

HMODULE LoadLibraryW(LPCWSTR name) noexcept {
    Gate gate(Function::LoadLibraryW, name);
    if (gate.faulted())
        return gate.fault<HMODULE>();
    std::string wanted = fold(toUtf8(name));
    if (wanted.ends_with(".dll"))
        wanted.resize(wanted.size() - 4);
    const Lock lock(gate.image());
    std::uint32_t number = firstModule;
    for (Library& library : libraries) {
        if (library.name == wanted && isThere(library, gate.runtime.directory())) {
            ++library.loads;
            return gate.done(reinterpret_cast<HMODULE>(handleOf(number)));
        }
        number += moduleDistance;
    }
    return gate.fails(HMODULE{}, ERROR_MOD_NOT_FOUND);
}

FARPROC GetProcAddressW(HMODULE module, LPCWSTR name) noexcept {
    Gate gate(Function::GetProcAddressW, module, name);
    if (gate.faulted())
        return gate.fault<FARPROC>();
    const Lock lock(gate.image());
    const Library* library = libraryOf(module);
    if (!library)
        return gate.fails(FARPROC{}, ERROR_INVALID_HANDLE);
    const std::string wanted = toUtf8(name);
    for (const Named& known : library->functions)
        if (known.name == wanted)
            return gate.doneAs(known.function, L"found"); // its address differs from run to run
    return gate.fails(FARPROC{}, ERROR_PROC_NOT_FOUND);
}

BOOL FreeLibrary(HMODULE module) noexcept {
    Gate gate(Function::FreeLibrary, module);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    Library* library = libraryOf(module);
    if (!library)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    --library->loads;
    return gate.done(TRUE);
}
