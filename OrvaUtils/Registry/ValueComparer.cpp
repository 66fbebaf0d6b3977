#include "OrvaUtils/Registry/ValueComparer.h"

#include "OrvaUtils/Registry/Comparing.h"
#include "OrvaUtils/Registry/RegBinaryValue.h"
#include "OrvaUtils/Registry/RegDwordBigEndianValue.h"
#include "OrvaUtils/Registry/RegDwordLittleEndianValue.h"
#include "OrvaUtils/Registry/RegExpandSzValue.h"
#include "OrvaUtils/Registry/RegMultiSzValue.h"
#include "OrvaUtils/Registry/RegSzValue.h"
#include "OrvaUtils/Registry/RegistryException.h"

namespace OrvaUtils::Registry {

void ValueComparer::visitSz(const RegSzValue& value, HKEY key) {
    compareString(key, value.name, value.text);
}

void ValueComparer::visitOther(const Value&, HKEY) {
    throw RegistryException(L"Unexpected value type");
}

void ValueComparer::visitMultiSz(const RegMultiSzValue& value, HKEY key) {
    compareMultiString(key, value.name, value.texts);
}

void ValueComparer::visitExpandSz(const RegExpandSzValue& value, HKEY key) {
    compareExpandString(key, value.name, value.text);
}

void ValueComparer::visitDwordBigEndian(const RegDwordBigEndianValue& value, HKEY key) {
    compareDwordBigEndian(key, value.name, value.number);
}

void ValueComparer::visitDwordLittleEndian(const RegDwordLittleEndianValue& value, HKEY key) {
    compareDword(key, value.name, value.number);
}

void ValueComparer::visitBinary(const RegBinaryValue& value, HKEY key) {
    compareBinary(key, value.name, value.bytes);
}

} // namespace OrvaUtils::Registry
