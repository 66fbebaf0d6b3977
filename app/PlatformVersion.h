#pragma once

#include <cstdint>

// Returns the second number of the platform's version: 15 for "2.15". The version is the REG_SZ value "Version" of
// HKEY_LOCAL_MACHINE\ORVA. The result is 0 if the text has no dot or no digit after the first dot. Throws
// OrvaUtils::Registry::RegistryException if the value is missing or has another type. Any thread may call.
std::int32_t platformMinorVersion();
