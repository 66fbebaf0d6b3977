#pragma once

#include <windows.h>

namespace OrvaUtils::Registry {

class Value;
class RegSzValue;
class RegMultiSzValue;
class RegExpandSzValue;
class RegDwordBigEndianValue;
class RegDwordLittleEndianValue;
class RegBinaryValue;

// A visitor of value objects: one operation for each class of Values.h.
//
// Value::accept calls the operation of the concrete class on the calling thread. `key` is the context given to
// `accept`.
class ValueVisitor {
public:
    virtual void visitSz(const RegSzValue& value, HKEY key) = 0;
    // For classes without an operation of their own. No class of this library calls it.
    virtual void visitOther(const Value& value, HKEY key) = 0;
    virtual void visitMultiSz(const RegMultiSzValue& value, HKEY key) = 0;
    virtual void visitExpandSz(const RegExpandSzValue& value, HKEY key) = 0;
    virtual void visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) = 0;
    virtual void visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) = 0;
    virtual void visitBinary(const RegBinaryValue& value, HKEY key) = 0;

protected:
    ~ValueVisitor() = default; // The destructor is protected: nobody owns a visitor through this interface.
};

} // namespace OrvaUtils::Registry
