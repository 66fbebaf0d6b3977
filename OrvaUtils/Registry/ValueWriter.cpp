#include "OrvaUtils/Registry/ValueWriter.h"

#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/Values.h"
#include "OrvaUtils/Registry/Writing.h"

namespace OrvaUtils::Registry {

void ValueWriter::visitSz(const RegSzValue& value, HKEY key) {
    writeString(key, value.name, value.data);
}

void ValueWriter::visitOther(const Value&, HKEY) {
    throw RegistryException(L"Write of registry value type not supported");
}

void ValueWriter::visitMultiSz(const RegMultiSzValue& value, HKEY key) {
    writeMultiString(key, value.name, value.data);
}

void ValueWriter::visitExpandSz(const RegExpandSzValue& value, HKEY key) {
    writeExpandString(key, value.name, value.data);
}

void ValueWriter::visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) {
    writeDwordBigEndian(key, value.name, value.data);
}

void ValueWriter::visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) {
    writeDword(key, value.name, value.data);
}

void ValueWriter::visitBinary(const RegBinaryValue& value, HKEY key) {
    writeBinary(key, value.name, value.data);
}

} // namespace OrvaUtils::Registry
