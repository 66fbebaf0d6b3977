// The association of ".osr" files (software repositories) with the application Tarvex: keys in HKEY_CLASSES_ROOT. Call
// both functions on the main thread during start-up.
//
// A missing key or value means "not configured". Any other failure throws OrvaUtils::Registry::RegistryException, and
// so does a value of another type than REG_SZ.
#pragma once

// Returns true if ".osr" belongs to the class "osrfile" and the command of this class starts the installed application.
// Both values are compared case-sensitively. The other keys of the association are not examined.
bool isAssociationConfigured();
// Writes all five keys. The caller flushes HKEY_CLASSES_ROOT.
void configureAssociation();
