// The autorun of the helper: its two values in HKEY_LOCAL_MACHINE\init, the list of programs that the panel starts when
// it boots. Call both functions on the main thread during start-up.
//
// A missing key or value means "not configured". Any other failure throws OrvaUtils::Registry::RegistryException; so
// does a "Launch61" that is not a REG_SZ.
#pragma once

// Tells whether "Launch61" holds the path of the installed helper (case-insensitive) and "Depend61" exists. The data of
// "Depend61" are not examined.
bool isAutorunConfigured();
// Writes both values and flushes HKEY_LOCAL_MACHINE.
void configureAutorun();
