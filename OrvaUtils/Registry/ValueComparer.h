#pragma once

#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// Compares value objects with the values of the same names in a key: `value.accept(comparer, key)`.
//
// Type and data must be equal. The functions of Comparing.h compare, and throw their exceptions. The object has no
// state.
class ValueComparer final : public ValueVisitor {
public:
    void visitSz(const RegSzValue& value, HKEY key) override;
    // Throws RegistryException "Unexpected value type".
    void visitOther(const Value& value, HKEY key) override;
    void visitMultiSz(const RegMultiSzValue& value, HKEY key) override;
    void visitExpandSz(const RegExpandSzValue& value, HKEY key) override;
    void visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) override;
    void visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) override;
    void visitBinary(const RegBinaryValue& value, HKEY key) override;
};

} // namespace OrvaUtils::Registry
