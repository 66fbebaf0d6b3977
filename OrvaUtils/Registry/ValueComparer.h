#pragma once

#include "OrvaUtils/Registry/ValueVisitor.h"

namespace OrvaUtils::Registry {

// Checks that the key given as the context holds values under their names, with their types and data. Failures are
// those of Comparing.h; a value of a class that it does not know throws "Unexpected value type".
class ValueComparer final : public ValueVisitor {
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
