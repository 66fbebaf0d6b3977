#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// REG_SZ.
class RegSzValue : public Value {
public:
    RegSzValue(std::wstring valueName, std::wstring valueText)
        : Value(std::move(valueName)), text(std::move(valueText)) {}

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitSz(*this, context);
    }

    const std::wstring text;
};

} // namespace OrvaUtils::Registry
