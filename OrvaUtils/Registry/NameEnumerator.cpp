#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

NameEnumerator::NameEnumerator(HKEY openKey, Function platformFunction) : key(openKey), function(platformFunction) {
    enumerate();
}

bool NameEnumerator::isValid() const {
    return valid;
}

std::wstring NameEnumerator::operator*() {
    // The copy stays valid although `enumerate` overwrites `name`.
    std::wstring current = name;
    ++index;
    enumerate();
    return current;
}

void NameEnumerator::enumerate() {
    // The platform sets the length of each name, so it must be reset for each call.
    DWORD length = MAX_PATH;
    valid = function(key, index, buffer, &length) == ERROR_SUCCESS;
    if (valid) {
        name.assign(buffer, length);
    }
}

} // namespace OrvaUtils::Registry
