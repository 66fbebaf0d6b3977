// The helper's own place among the programs that the panel starts when it boots: the list "init" of the registry.
//
// What is missing there means "not configured"; a failure, also a value of another type, throws
// OrvaUtils::Registry::RegistryException.
#pragma once

// Whether the list names the installed helper, its case aside, and an order of start, whichever that is.
bool isAutorunConfigured();
// Writes both, and makes them last.
void configureAutorun();
