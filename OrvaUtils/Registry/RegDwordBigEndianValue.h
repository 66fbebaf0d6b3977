#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

#include <cstdint>

namespace OrvaUtils::Registry {

// REG_DWORD_BIG_ENDIAN. Deliberate: the number is kept as its four bytes stand, not reordered.
class RegDwordBigEndianValue : public Value {
public:
    RegDwordBigEndianValue(std::wstring valueName, std::uint32_t valueNumber)
        : Value(std::move(valueName)), number(valueNumber) {}

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitDwordBigEndian(*this, context);
    }

    const std::uint32_t number;
};

} // namespace OrvaUtils::Registry
