#pragma once

#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// Stores values under their names in the key given as the context: `value.accept(writer, key)`. Failures are those of
// Writing.h; a value of a class that it does not know throws "Write of registry value type not supported".
class ValueWriter final : public ValueVisitor {
public:
    void visitSz(const RegSzValue& value, HKEY key) override;
    void visitOther(const Value& value, HKEY key) override;
    void visitMultiSz(const RegMultiSzValue& value, HKEY key) override;
    void visitExpandSz(const RegExpandSzValue& value, HKEY key) override;
    void visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) override;
    void visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) override;
    void visitBinary(const RegBinaryValue& value, HKEY key) override;
};

} // namespace OrvaUtils::Registry
