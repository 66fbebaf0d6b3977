#include "OrvaUtils/PlatformInfo/PlatformInfo.h"

#include "OrvaUtils/PlatformInfo/PlatformInfoException.h"
#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Tags/TagException.h"
#include "OrvaUtils/Tags/TagStore.h"
#include "OrvaUtils/Text.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace OrvaUtils {

namespace {

constexpr std::uint32_t MODEL_TAG = 18;
constexpr std::uint32_t GUID_TAG = 48;

// The names of the types from 1 on.
constexpr std::string_view TYPE_NAMES[] = {"WinCE-X86", "WinCE-ARM", "Win32", "Win64"};

// The names are invented: see the header.
struct Model {
    std::uint16_t code;
    const wchar_t* name;
};
constexpr Model MODELS[] = {
    {1, L"Panel A1"},     {2, L"Panel A2"},     {3, L"Panel A3"},     {4, L"Panel A4"},     {5, L"Panel A5"},
    {6, L"Panel A6"},     {7, L"Panel A7"},     {8, L"Panel A8"},     {9, L"Panel A9"},     {10, L"Panel A10"},
    {11, L"Panel A11"},   {12, L"Panel A12"},   {13, L"Panel A13"},   {14, L"Panel A14"},   {15, L"Panel A15"},
    {16, L"Panel A16"},   {17, L"Panel A17"},   {18, L"Panel A18"},   {19, L"Panel A19"},   {20, L"Panel A20"},
    {21, L"Panel A21"},   {22, L"Panel A22"},   {0x400, L"Panel B0"}, {0x401, L"Panel B1"}, {0x402, L"Panel B2"},
    {0x403, L"Panel B3"}, {0x404, L"Panel B4"}, {0x405, L"Panel B5"}, {0x406, L"Panel B6"}, {0x407, L"Panel B7"},
    {0x408, L"Panel B8"},
};
static_assert(std::size(MODELS) == 31);

[[noreturn]] void refuseType() {
    throw PlatformInfoException(L"Unexpected platform type");
}

// Fills `bytes` from a tag that is at least this long. Otherwise leaves `bytes` unchanged and returns false.
template<std::size_t size>
bool readTag(Tags::TagStore& store, std::uint32_t tag, std::array<std::uint8_t, size>& bytes) {
    try {
        // A separate buffer keeps the result intact if the tag turns out to be too short.
        std::vector<std::uint8_t> buffer(size);
        if (store.getData(tag, buffer) < size) {
            return false;
        }
        std::copy(buffer.begin(), buffer.end(), bytes.begin());
        return true;
    } catch (const Tags::TagException&) {
        return false;
    }
}

} // namespace

PlatformInfo& PlatformInfo::instance() {
    static PlatformInfo info;
    return info;
}

std::string PlatformInfo::getDeviceName() {
    return narrow(Registry::readString(HKEY_LOCAL_MACHINE, L"Ident", L"Name"));
}

std::uint32_t PlatformInfo::getPlatformType() const {
    return platformType;
}

std::string PlatformInfo::platformTypeToString(std::uint32_t type) {
    if (type < 1 || type > std::size(TYPE_NAMES)) {
        refuseType();
    }
    // Type codes begin with 1, the table with 0.
    return std::string(TYPE_NAMES[type - 1]);
}

std::uint32_t PlatformInfo::platformTypeFromString(std::string_view name) {
    const auto* const found = std::find(std::begin(TYPE_NAMES), std::end(TYPE_NAMES), name);
    if (found == std::end(TYPE_NAMES)) {
        refuseType();
    }
    return static_cast<std::uint32_t>(found - TYPE_NAMES) + 1;
}

std::uint16_t PlatformInfo::getModelCode() {
    if (!modelPresent) {
        load();
    }
    return modelCode;
}

std::wstring PlatformInfo::getModelName(std::uint32_t code) {
    const auto* const found = std::find_if(std::begin(MODELS), std::end(MODELS),
                                           [&](const Model& model) { return model.code == (code & 0xFFFF); });
    return found == std::end(MODELS) ? L"unknown" : found->name;
}

PlatformInfo::Guid PlatformInfo::getGuid() {
    if (!guidPresent) {
        load();
    }
    if (!guidPresent) {
        throw PlatformInfoException(L"Guid not present");
    }
    return guid;
}

void PlatformInfo::load() {
    try {
        Tags::TagStore store;
        std::array<std::uint8_t, sizeof modelCode> code{};
        if (!modelPresent && readTag(store, MODEL_TAG, code)) {
            modelCode = static_cast<std::uint16_t>(code[0] | code[1] << 8);
            modelPresent = true;
        }
        guidPresent = guidPresent || readTag(store, GUID_TAG, guid);
    } catch (const Exception&) {
        // The library may be missing, or the store cannot be opened or closed. Values that were read by then stay
        // valid.
    }
}

} // namespace OrvaUtils
