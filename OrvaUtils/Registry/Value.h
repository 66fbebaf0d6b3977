#pragma once

#include <windows.h>

#include <string>
#include <utility>

namespace OrvaUtils::Registry {

// A registry value as an object: a name and, in the derived classes of Values.h, data of one type.
//
// The object is independent of any key. ValueWriter stores it in a key, ValueComparer compares it with a key, and
// `readValue` creates it. Objects do not change after construction.
class ValueVisitor;

class Value {
public:
    // An empty name means the default value of a key.
    explicit Value(std::wstring valueName) : name(std::move(valueName)) {}
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // Calls the visitor's operation for the concrete class, with this object and `context`, the key that the visitor
    // works on. Exceptions of the visitor pass through.
    virtual void accept(ValueVisitor& visitor, HKEY context) const = 0;
    virtual ~Value() = default;

    const std::wstring name;
};

} // namespace OrvaUtils::Registry
