#include "OrvaUtils/Registry/Writing.h"

#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Text.h"

namespace OrvaUtils::Registry {

namespace {

void write(HKEY key, const std::wstring& name, DWORD type, const std::uint8_t* data, std::size_t size,
           const wchar_t* failure) {
    if (RegSetValueExW(key, name.c_str(), 0, type, data, static_cast<DWORD>(size)) != ERROR_SUCCESS) {
        throw RegistryException(failure);
    }
}

void writeNumber(HKEY key, const std::wstring& name, DWORD type, std::uint32_t number, const wchar_t* failure) {
    write(key, name, type, reinterpret_cast<const std::uint8_t*>(&number), sizeof number, failure);
}

// The terminating zero belongs to the data.
void writeText(HKEY key, const std::wstring& name, DWORD type, const std::wstring& text, const wchar_t* failure) {
    const std::vector<std::uint8_t> bytes = toText16({text.c_str(), text.size() + 1});
    write(key, name, type, bytes.data(), bytes.size(), failure);
}

} // namespace

void writeBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& bytes) {
    // RegSetValueExW gets a valid address even for an empty value.
    const std::uint8_t nothing = 0;
    write(key, name, REG_BINARY, bytes.empty() ? &nothing : bytes.data(), bytes.size(),
          L"Failed to set REG_BINARY value");
}

void writeDword(HKEY key, const std::wstring& name, std::uint32_t number) {
    writeNumber(key, name, REG_DWORD, number, L"Failed to set REG_DWORD_LE value");
}

void writeDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t number) {
    // The bytes are deliberately not reordered.
    writeNumber(key, name, REG_DWORD_BIG_ENDIAN, number, L"Failed to set REG_DWORD_BE value");
}

void writeString(HKEY key, const std::wstring& name, const std::wstring& text) {
    writeText(key, name, REG_SZ, text, L"Failed to set REG_SZ value");
}

void writeExpandString(HKEY key, const std::wstring& name, const std::wstring& text) {
    writeText(key, name, REG_EXPAND_SZ, text, L"Failed to set REG_EXPAND_SZ value");
}

void writeMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& texts) {
    std::wstring all;
    for (const std::wstring& text : texts) {
        all += text;
        all += L'\0';
    }
    // `writeText` appends the last zero, which ends the list.
    writeText(key, name, REG_MULTI_SZ, all, L"Failed to set REG_MULTI_SZ value");
}

} // namespace OrvaUtils::Registry
