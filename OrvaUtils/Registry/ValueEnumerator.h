#pragma once

#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

// Enumerates the names of the values in an open key. The default value has an empty name. NameEnumerator documents its
// use and its limits.
class ValueEnumerator final : public NameEnumerator {
public:
    // Reads the first name at once. The key is not owned and must stay open.
    explicit ValueEnumerator(HKEY openKey);
};

} // namespace OrvaUtils::Registry
