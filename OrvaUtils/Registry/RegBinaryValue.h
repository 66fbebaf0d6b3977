#pragma once

#include "OrvaUtils/Registry/AbstractBinaryValue.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// REG_BINARY.
class RegBinaryValue : public AbstractBinaryValue {
public:
    using AbstractBinaryValue::AbstractBinaryValue;

    void accept(ValueVisitor& visitor, HKEY context) const override {
        visitor.visitBinary(*this, context);
    }
};

} // namespace OrvaUtils::Registry
