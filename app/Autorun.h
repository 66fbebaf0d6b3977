// The autorun entry of the helper: the values "Launch61" and "Depend61" of HKEY_LOCAL_MACHINE\init. This key lists the
// programs that the panel starts when it boots. Call both functions on the main thread during start-up.
//
// A missing key or value means "not configured". Any other failure throws OrvaUtils::Registry::RegistryException, and
// so does a "Launch61" of another type than REG_SZ.
#pragma once

// Returns true if "Launch61" holds the path of the installed helper (case-insensitive) and "Depend61" exists. The data
// of "Depend61" are not examined.
bool isAutorunConfigured();
// Writes both values and flushes HKEY_LOCAL_MACHINE.
void configureAutorun();
