#pragma once

#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

// Enumerates the names of the keys directly below an open key. NameEnumerator documents its use and its limits.
class KeyEnumerator final : public NameEnumerator {
public:
    // Reads the first name at once. The key is not owned and must stay open.
    explicit KeyEnumerator(HKEY openKey);
};

} // namespace OrvaUtils::Registry
