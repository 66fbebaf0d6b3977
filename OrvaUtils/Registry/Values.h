// The classes of registry values, one class for each registry type. Each object has a `name` and `data`; the functions
// of Reading.h and Writing.h use the same data types.
#pragma once

#include "OrvaUtils/Registry/Value.h"
#include "OrvaUtils/Registry/ValueVisitor.h"

#include <cstdint>
#include <vector>

namespace OrvaUtils::Registry {

template<class Data>
// The common base: a name and data of one C++ type.
class DataValue : public Value {
public:
    DataValue(std::wstring valueName, Data valueData) : Value(std::move(valueName)), data(std::move(valueData)) {}

    const Data data;
};

// A value that consists of plain bytes.
class AbstractBinaryValue : public DataValue<std::vector<std::uint8_t>> {
public:
    using DataValue::DataValue;
};

template<class Concrete, class Base, void (ValueVisitor::*operation)(const Concrete&, HKEY)>
// Implements `accept` for the concrete classes: it calls `operation` of the visitor.
class VisitedValue : public Base {
public:
    using Base::Base;

    void accept(ValueVisitor& visitor, HKEY context) const override {
        (visitor.*operation)(static_cast<const Concrete&>(*this), context);
    }
};

// REG_SZ: a text without its terminating zero.
class RegSzValue : public VisitedValue<RegSzValue, DataValue<std::wstring>, &ValueVisitor::visitSz> {
public:
    using VisitedValue::VisitedValue;
};

// REG_EXPAND_SZ: a text whose names of variables are not expanded.
class RegExpandSzValue : public VisitedValue<RegExpandSzValue, DataValue<std::wstring>, &ValueVisitor::visitExpandSz> {
public:
    using VisitedValue::VisitedValue;
};

// REG_BINARY: bytes.
class RegBinaryValue : public VisitedValue<RegBinaryValue, AbstractBinaryValue, &ValueVisitor::visitBinary> {
public:
    using VisitedValue::VisitedValue;
};

// REG_DWORD: a 32-bit number.
class RegDwordLittleEndianValue
    : public VisitedValue<RegDwordLittleEndianValue, DataValue<std::uint32_t>, &ValueVisitor::visitDwordLittleEndian> {
public:
    using VisitedValue::VisitedValue;
};

// REG_DWORD_BIG_ENDIAN: a 32-bit number. Its four bytes are deliberately not reordered.
class RegDwordBigEndianValue
    : public VisitedValue<RegDwordBigEndianValue, DataValue<std::uint32_t>, &ValueVisitor::visitDwordBigEndian> {
public:
    using VisitedValue::VisitedValue;
};

// REG_MULTI_SZ: a list of texts in the order of the registry.
class RegMultiSzValue
    : public VisitedValue<RegMultiSzValue, DataValue<std::vector<std::wstring>>, &ValueVisitor::visitMultiSz> {
public:
    using VisitedValue::VisitedValue;
};

} // namespace OrvaUtils::Registry
