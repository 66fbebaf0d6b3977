#pragma once

#include "OrvaUtils/Registry/NameEnumerator.h"

namespace OrvaUtils::Registry {

// The names of the values in an open key; that of the default value is empty.
class ValueEnumerator final : public NameEnumerator {
public:
    explicit ValueEnumerator(HKEY openKey);
};

} // namespace OrvaUtils::Registry
