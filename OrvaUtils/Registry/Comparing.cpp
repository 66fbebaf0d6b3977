#include "OrvaUtils/Registry/Comparing.h"

#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Registry/RegistryException.h"

namespace OrvaUtils::Registry {

namespace {

void require(bool equal, const wchar_t* failure) {
    if (!equal) {
        throw RegistryException(failure);
    }
}

} // namespace

void compareBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& expected) {
    require(readBinary(key, name) == expected, L"Different binary values");
}

void compareDword(HKEY key, const std::wstring& name, std::uint32_t expected) {
    require(readDword(key, name) == expected, L"Different DWORD values");
}

void compareDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t expected) {
    require(readDwordBigEndian(key, name) == expected, L"Different DWORD values");
}

void compareString(HKEY key, const std::wstring& name, const std::wstring& expected) {
    require(readString(key, name) == expected, L"Different string values");
}

void compareExpandString(HKEY key, const std::wstring& name, const std::wstring& expected) {
    require(readExpandString(key, name) == expected, L"Different expand string values");
}

void compareMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& expected) {
    require(readMultiString(key, name) == expected, L"Different multi string values");
}

} // namespace OrvaUtils::Registry
