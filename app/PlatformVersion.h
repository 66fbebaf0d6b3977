#pragma once

#include <cstdint>

// The second number of the platform's version, which the registry holds as text: 15 for "2.15". 0 for a text without a
// dot, or without a digit behind the first one. Throws OrvaUtils::Registry::RegistryException without such a text.
std::int32_t platformMinorVersion();
