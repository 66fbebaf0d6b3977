#pragma once

#include <windows.h>

#include <string>
#include <utility>

namespace OrvaUtils::Registry {

class ValueVisitor;

// A value of the registry with its name, apart from any key: one class a type, each with the data as the program uses
// them. The empty name is that of a key's default value.
class Value {
public:
    explicit Value(std::wstring valueName) : name(std::move(valueName)) {}
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // Calls the visitor's operation for the concrete class, with this and the context, the key that the visitor works
    // on.
    virtual void accept(ValueVisitor& visitor, HKEY context) const = 0;
    virtual ~Value() = default;

    const std::wstring name;
};

} // namespace OrvaUtils::Registry
