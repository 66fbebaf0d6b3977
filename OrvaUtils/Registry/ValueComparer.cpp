#include "OrvaUtils/Registry/ValueComparer.h"

#include "OrvaUtils/Registry/Comparing.h"
#include "OrvaUtils/Registry/RegistryException.h"
#include "OrvaUtils/Registry/Values.h"

namespace OrvaUtils::Registry {

void ValueComparer::visitSz(const RegSzValue& value, HKEY key) {
    compareString(key, value.name, value.data);
}

void ValueComparer::visitOther(const Value&, HKEY) {
    throw RegistryException(L"Unexpected value type");
}

void ValueComparer::visitMultiSz(const RegMultiSzValue& value, HKEY key) {
    compareMultiString(key, value.name, value.data);
}

void ValueComparer::visitExpandSz(const RegExpandSzValue& value, HKEY key) {
    compareExpandString(key, value.name, value.data);
}

void ValueComparer::visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) {
    compareDwordBigEndian(key, value.name, value.data);
}

void ValueComparer::visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) {
    compareDword(key, value.name, value.data);
}

void ValueComparer::visitBinary(const RegBinaryValue& value, HKEY key) {
    compareBinary(key, value.name, value.data);
}

} // namespace OrvaUtils::Registry
