#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// REG_EXPAND_SZ. Names of variables in the text stay as they are.
class RegExpandSzValue : public Value {
public:
    RegExpandSzValue(std::wstring valueName, std::wstring valueText)
        : Value(std::move(valueName)), text(std::move(valueText)) {}

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitExpandSz(*this, context);
    }

    const std::wstring text;
};

} // namespace OrvaUtils::Registry
