#pragma once

#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// Stores value objects under their names in a key: `value.accept(writer, key)`.
//
// The functions of Writing.h write, and throw their exceptions. The object has no state.
class ValueWriter final : public ValueVisitor {
public:
    void visitSz(const RegSzValue& value, HKEY key) override;
    // Throws RegistryException "Write of registry value type not supported".
    void visitOther(const Value& value, HKEY key) override;
    void visitMultiSz(const RegMultiSzValue& value, HKEY key) override;
    void visitExpandSz(const RegExpandSzValue& value, HKEY key) override;
    void visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) override;
    void visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) override;
    void visitBinary(const RegBinaryValue& value, HKEY key) override;
};

} // namespace OrvaUtils::Registry
