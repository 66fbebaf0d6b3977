#include "OrvaUtils/Tags/TagStore.h"

#include "OrvaUtils/Tags/TagException.h"

#include <tagUserAPI.h>

#include <array>
#include <cstddef>
#include <exception>
#include <iterator>

namespace OrvaUtils::Tags {

namespace {

// The include file lists the functions of the library once: here as enumerators, below as names.
enum class Function : std::size_t {
#define TAG_FUNCTION(name) name,
#include <tagUserAPI.inc>
};

constexpr const wchar_t* NAMES[] = {
#define TAG_FUNCTION(name) L"" #name,
#include <tagUserAPI.inc>
};

// The addresses of the functions, filled by the last connection.
std::array<void*, std::size(NAMES)> table{};

const wchar_t* nameOf(Function function) {
    return NAMES[static_cast<std::size_t>(function)];
}

struct Outcome {
    BOOL result = FALSE;
    DWORD error = 0;

    bool succeeded() const {
        return result != FALSE && error == 0;
    }
};

// The last argument of every function of the library receives the error code.
template<typename Signature, typename... Arguments>
Outcome call(Function function, Arguments... arguments) {
    Outcome outcome;
    outcome.result =
        reinterpret_cast<Signature>(table[static_cast<std::size_t>(function)])(arguments..., &outcome.error);
    return outcome;
}

void check(Function function, const Outcome& outcome) {
    if (!outcome.succeeded()) {
        throw TagException(nameOf(function), outcome.error);
    }
}

Outcome read(std::uint32_t tagId, std::vector<std::uint8_t>& buffer, DWORD& size) {
    // The library reads the size of the buffer here and writes the size of the tag.
    size = static_cast<DWORD>(buffer.size());
    return call<decltype(&TAG_Get_Data)>(Function::TAG_Get_Data, tagId, &size, static_cast<void*>(buffer.data()));
}

} // namespace

TagStore::TagStore() : library(L"tagUserAPI.dll", DynamicLibrary::Lifetime::Object) {
    for (std::size_t function = 0; function < table.size(); ++function) {
        // Every function is looked up, including functions that this class does not call. A library that lacks a
        // function is refused.
        table[function] = library.getAddress(NAMES[function]);
    }
    check(Function::TAG_Open, call<decltype(&TAG_Open)>(Function::TAG_Open));
}

TagStore::~TagStore() noexcept(false) {
    const Outcome outcome = call<decltype(&TAG_Close)>(Function::TAG_Close);
    // A second exception during stack unwinding would end the process.
    if (std::uncaught_exceptions() == 0) {
        check(Function::TAG_Close, outcome);
    }
}

void TagStore::format() {
    check(Function::TAG_Format, call<decltype(&TAG_Format)>(Function::TAG_Format));
}

std::uint32_t TagStore::getData(std::uint32_t tagId, std::vector<std::uint8_t>& buffer) {
    DWORD size = 0;
    check(Function::TAG_Get_Data, read(tagId, buffer, size));
    return size;
}

std::uint32_t TagStore::getDataGrowing(std::uint32_t tagId, std::vector<std::uint8_t>& buffer) {
    DWORD size = 0;
    Outcome outcome = read(tagId, buffer, size);
    // The result of the first call does not matter: the library may report a small buffer as an error.
    if (size > buffer.size()) {
        buffer.resize(size);
        outcome = read(tagId, buffer, size);
    }
    check(Function::TAG_Get_Data, outcome);
    return size;
}

void TagStore::setData(std::uint32_t tagId, const std::vector<std::uint8_t>& bytes) {
    check(Function::TAG_Set_Data,
          call<decltype(&TAG_Set_Data)>(Function::TAG_Set_Data, tagId, static_cast<DWORD>(bytes.size()),
                                        static_cast<const void*>(bytes.data())));
}

} // namespace OrvaUtils::Tags
