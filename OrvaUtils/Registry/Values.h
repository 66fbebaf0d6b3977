// The classes of the registry's values, one a type. Each has a name and `data`, as the functions of Reading.h and
// Writing.h take them.
#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

#include <cstdint>
#include <vector>

namespace OrvaUtils::Registry {

template<class Data>
class DataValue : public Value {
public:
    DataValue(std::wstring valueName, Data valueData) : Value(std::move(valueName)), data(std::move(valueData)) {}

    const Data data;
};

// Bytes without a meaning of their own.
class AbstractBinaryValue : public DataValue<std::vector<std::uint8_t>> {
public:
    using DataValue::DataValue;
};

// What the concrete classes share: visitors are called with `operation`.
template<class Concrete, class Base, void (ValueVisitor::*operation)(const Concrete&, HKEY)>
class VisitedValue : public Base {
public:
    using Base::Base;

    void accept(ValueVisitor& visitor, HKEY context) const override {
        (visitor.*operation)(static_cast<const Concrete&>(*this), context);
    }
};

// REG_SZ.
class RegSzValue : public VisitedValue<RegSzValue, DataValue<std::wstring>, &ValueVisitor::visitSz> {
public:
    using VisitedValue::VisitedValue;
};

// REG_EXPAND_SZ. Names of variables in the text stay as they are.
class RegExpandSzValue : public VisitedValue<RegExpandSzValue, DataValue<std::wstring>, &ValueVisitor::visitExpandSz> {
public:
    using VisitedValue::VisitedValue;
};

// REG_BINARY.
class RegBinaryValue : public VisitedValue<RegBinaryValue, AbstractBinaryValue, &ValueVisitor::visitBinary> {
public:
    using VisitedValue::VisitedValue;
};

// REG_DWORD.
class RegDwordLittleEndianValue
    : public VisitedValue<RegDwordLittleEndianValue, DataValue<std::uint32_t>, &ValueVisitor::visitDwordLittleEndian> {
public:
    using VisitedValue::VisitedValue;
};

// REG_DWORD_BIG_ENDIAN. Deliberate: the number is kept as its four bytes stand, not reordered.
class RegDwordBigEndianValue
    : public VisitedValue<RegDwordBigEndianValue, DataValue<std::uint32_t>, &ValueVisitor::visitDwordBigEndian> {
public:
    using VisitedValue::VisitedValue;
};

// REG_MULTI_SZ.
class RegMultiSzValue
    : public VisitedValue<RegMultiSzValue, DataValue<std::vector<std::wstring>>, &ValueVisitor::visitMultiSz> {
public:
    using VisitedValue::VisitedValue;
};

} // namespace OrvaUtils::Registry
