#pragma once

#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

// The names of the keys directly below an open key.
class KeyEnumerator final : public NameEnumerator {
public:
    explicit KeyEnumerator(HKEY openKey);
};

} // namespace OrvaUtils::Registry
