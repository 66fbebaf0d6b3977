#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

NameEnumerator::NameEnumerator(HKEY openKey, Function platformFunction) : key(openKey), function(platformFunction) {
    enumerate();
}

bool NameEnumerator::isValid() const {
    return valid;
}

std::wstring NameEnumerator::operator*() {
    std::wstring current = name;
    ++index;
    enumerate();
    return current;
}

void NameEnumerator::enumerate() {
    DWORD length = MAX_PATH;
    valid = function(key, index, buffer, &length) == ERROR_SUCCESS;
    if (valid) {
        name.assign(buffer, length);
    }
}

} // namespace OrvaUtils::Registry
