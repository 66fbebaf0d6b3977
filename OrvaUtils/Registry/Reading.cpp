#include "OrvaUtils/Registry/Reading.h"

#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/Values.h"
#include "OrvaUtils/Text.h"

#include <algorithm>

namespace OrvaUtils::Registry {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Larger values need a second query.
constexpr std::size_t FIRST_BUFFER = 50; // bytes

struct Data {
    DWORD type = REG_NONE;
    Bytes bytes;
};

// Reads type and bytes of a value of any type.
Data query(HKEY key, const std::wstring& name) {
    Data data;
    data.bytes.resize(FIRST_BUFFER);
    auto size = static_cast<DWORD>(data.bytes.size());
    LONG result = RegQueryValueExW(key, name.c_str(), nullptr, &data.type, data.bytes.data(), &size);
    // The failed call has set `size` to the size of the value.
    if (result == ERROR_MORE_DATA) {
        data.bytes.resize(size);
        result = RegQueryValueExW(key, name.c_str(), nullptr, &data.type, data.bytes.data(), &size);
    }
    if (result != ERROR_SUCCESS) {
        throw RegistryException(L"Cannot query the given registry value");
    }
    data.bytes.resize(size);
    return data;
}

// Reads a value that must have this type.
Bytes query(HKEY key, const std::wstring& name, DWORD type) {
    Data data = query(key, name);
    if (data.type != type) {
        throw RegistryException(L"Unexpected value type");
    }
    return std::move(data.bytes);
}

// Copies the bytes in the order of memory. Missing bytes stay zero.
std::uint32_t numberIn(const Bytes& bytes) {
    std::uint32_t number = 0;
    std::copy_n(bytes.data(), std::min(bytes.size(), sizeof number), reinterpret_cast<std::uint8_t*>(&number));
    return number;
}

// The data of a text may lack the terminating zero or continue after it. Only the characters before it count.
std::wstring textIn(const Bytes& bytes) {
    std::wstring text = fromText16(bytes.data(), bytes.size());
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
}

// Each text ends at its zero character; an empty text ends the list.
std::vector<std::wstring> textsIn(const Bytes& bytes) {
    const std::wstring text = fromText16(bytes.data(), bytes.size());
    std::vector<std::wstring> texts;
    for (std::size_t begin = 0, end = 0; begin < text.size() && text[begin] != L'\0'; begin = end + 1) {
        end = std::min(text.find(L'\0', begin), text.size());
        texts.push_back(text.substr(begin, end - begin));
    }
    return texts;
}

std::unique_ptr<Value> makeValue(const std::wstring& name, const Data& data) {
    switch (data.type) {
    case REG_SZ:
        return std::make_unique<RegSzValue>(name, textIn(data.bytes));
    case REG_EXPAND_SZ:
        return std::make_unique<RegExpandSzValue>(name, textIn(data.bytes));
    case REG_BINARY:
        return std::make_unique<RegBinaryValue>(name, data.bytes);
    case REG_DWORD:
        return std::make_unique<RegDwordLittleEndianValue>(name, numberIn(data.bytes));
    case REG_DWORD_BIG_ENDIAN:
        return std::make_unique<RegDwordBigEndianValue>(name, numberIn(data.bytes));
    case REG_MULTI_SZ:
        return std::make_unique<RegMultiSzValue>(name, textsIn(data.bytes));
    default:
        throw RegistryException(L"Invalid datatype given");
    }
}

} // namespace

std::vector<std::uint8_t> readBinary(HKEY key, const std::wstring& name) {
    return query(key, name, REG_BINARY);
}

std::uint32_t readDword(HKEY key, const std::wstring& name) {
    return numberIn(query(key, name, REG_DWORD));
}

std::uint32_t readDwordBigEndian(HKEY key, const std::wstring& name) {
    // The bytes are deliberately not reordered.
    return numberIn(query(key, name, REG_DWORD_BIG_ENDIAN));
}

std::wstring readString(HKEY key, const std::wstring& name) {
    return textIn(query(key, name, REG_SZ));
}

std::wstring readString(HKEY root, const std::wstring& subkey, const std::wstring& name) {
    const Key key(root, subkey);
    return readString(key.handle(), name);
}

std::wstring readExpandString(HKEY key, const std::wstring& name) {
    return textIn(query(key, name, REG_EXPAND_SZ));
}

std::vector<std::wstring> readMultiString(HKEY key, const std::wstring& name) {
    return textsIn(query(key, name, REG_MULTI_SZ));
}

std::unique_ptr<Value> readValue(HKEY key, const std::wstring& name) {
    return makeValue(name, query(key, name));
}

std::unique_ptr<Value> makeValue(const std::wstring& name, const std::uint8_t* data, std::size_t size, DWORD type) {
    return makeValue(name, Data{type, Bytes(data, data + size)});
}

} // namespace OrvaUtils::Registry
