#pragma once

#include "OrvaUtils/Registry/Value.h"

#include <cstdint>
#include <vector>

namespace OrvaUtils::Registry {

// Bytes without a meaning of their own.
class AbstractBinaryValue : public Value {
public:
    AbstractBinaryValue(std::wstring valueName, std::vector<std::uint8_t> valueBytes)
        : Value(std::move(valueName)), bytes(std::move(valueBytes)) {}

    const std::vector<std::uint8_t> bytes;
};

} // namespace OrvaUtils::Registry
