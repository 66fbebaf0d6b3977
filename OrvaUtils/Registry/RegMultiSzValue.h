#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

#include <vector>

namespace OrvaUtils::Registry {

// REG_MULTI_SZ.
class RegMultiSzValue : public Value {
public:
    RegMultiSzValue(std::wstring valueName, std::vector<std::wstring> valueTexts)
        : Value(std::move(valueName)), texts(std::move(valueTexts)) {}

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitMultiSz(*this, context);
    }

    const std::vector<std::wstring> texts;
};

} // namespace OrvaUtils::Registry
