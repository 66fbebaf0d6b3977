// Opens files of software repositories, ".osr", with the application Tarvex: keys below HKEY_CLASSES_ROOT.
//
// What is missing there means "not configured"; a failure, also a value of another type, throws
// OrvaUtils::Registry::RegistryException.
#pragma once

// Whether ".osr" has its class, and that opens with the installed application, both to the letter. What else belongs to
// the association is not looked at.
bool isAssociationConfigured();
// Writes all of it. The caller flushes HKEY_CLASSES_ROOT.
void configureAssociation();
