#include "OrvaUtils/Tags/TagStore.h"

#include "OrvaUtils/Tags/TagException.h"

#include <tagUserAPI.h>

#include <array>
#include <cstddef>
#include <exception>

namespace OrvaUtils::Tags {

namespace {

enum Function : std::size_t {
    GET_DB_SIZE,
    OPEN,
    CLOSE,
    FORMAT,
    GET_VALID_IDS_NR,
    GET_DATA,
    SET_DATA,
    DELETE_TAG,
    FUNCTIONS
};

constexpr const wchar_t* NAMES[FUNCTIONS] = {
    L"TAG_GetDBsize",        L"TAG_Open",     L"TAG_Close",    L"TAG_Format",
    L"TAG_Get_Valid_Ids_Nr", L"TAG_Get_Data", L"TAG_Set_Data", L"TAG_Delete",
};

std::array<void*, FUNCTIONS> table{};

struct Outcome {
    BOOL result = FALSE;
    DWORD error = 0;

    bool succeeded() const {
        return result != FALSE && error == 0;
    }
};

// The error code is every function's last argument.
template<typename Signature, typename... Arguments>
Outcome call(Function function, Arguments... arguments) {
    Outcome outcome;
    outcome.result = reinterpret_cast<Signature>(table[function])(arguments..., &outcome.error);
    return outcome;
}

void check(Function function, const Outcome& outcome) {
    if (!outcome.succeeded()) {
        throw TagException(NAMES[function], outcome.error);
    }
}

Outcome read(std::uint32_t tagId, std::vector<std::uint8_t>& buffer, DWORD& size) {
    size = static_cast<DWORD>(buffer.size());
    return call<decltype(&TAG_Get_Data)>(GET_DATA, tagId, &size, static_cast<void*>(buffer.data()));
}

} // namespace

TagStore::TagStore() : library(L"tagUserAPI.dll", DynamicLibrary::Lifetime::Object) {
    for (std::size_t function = 0; function < FUNCTIONS; ++function) {
        table[function] = library.getAddress(NAMES[function]);
    }
    check(OPEN, call<decltype(&TAG_Open)>(OPEN));
}

TagStore::~TagStore() noexcept(false) {
    const Outcome outcome = call<decltype(&TAG_Close)>(CLOSE);
    if (std::uncaught_exceptions() == 0) {
        check(CLOSE, outcome);
    }
}

void TagStore::format() {
    check(FORMAT, call<decltype(&TAG_Format)>(FORMAT));
}

std::uint32_t TagStore::getData(std::uint32_t tagId, std::vector<std::uint8_t>& buffer) {
    DWORD size = 0;
    check(GET_DATA, read(tagId, buffer, size));
    return size;
}

std::uint32_t TagStore::getDataGrowing(std::uint32_t tagId, std::vector<std::uint8_t>& buffer) {
    DWORD size = 0;
    check(GET_DATA, read(tagId, buffer, size));
    if (size > buffer.size()) {
        buffer.resize(size);
        check(GET_DATA, read(tagId, buffer, size));
    }
    return size;
}

void TagStore::setData(std::uint32_t tagId, const std::vector<std::uint8_t>& bytes) {
    check(SET_DATA, call<decltype(&TAG_Set_Data)>(SET_DATA, tagId, static_cast<DWORD>(bytes.size()),
                                                  static_cast<const void*>(bytes.data())));
}

} // namespace OrvaUtils::Tags
