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

// Does something with a value and a key, by the value's class. Values call it from `accept`, on the same thread.
class ValueVisitor {
public:
    virtual void visitSz(const RegSzValue& value, HKEY key) = 0;
    // For a value of any class that has no operation here. No class of this library calls it.
    virtual void visitOther(const Value& value, HKEY key) = 0;
    virtual void visitMultiSz(const RegMultiSzValue& value, HKEY key) = 0;
    virtual void visitExpandSz(const RegExpandSzValue& value, HKEY key) = 0;
    virtual void visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) = 0;
    virtual void visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) = 0;
    virtual void visitBinary(const RegBinaryValue& value, HKEY key) = 0;

protected:
    ~ValueVisitor() = default; // never owned
};

} // namespace OrvaUtils::Registry
