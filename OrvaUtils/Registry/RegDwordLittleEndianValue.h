#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

#include <cstdint>

namespace OrvaUtils::Registry {

// REG_DWORD.
class RegDwordLittleEndianValue : public Value {
public:
    RegDwordLittleEndianValue(std::wstring valueName, std::uint32_t valueNumber)
        : Value(std::move(valueName)), number(valueNumber) {}

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitDwordLittleEndian(*this, context);
    }

    const std::uint32_t number;
};

} // namespace OrvaUtils::Registry
