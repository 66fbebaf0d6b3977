// Starts the helper's and the application's installed programs, without waiting for them.
#pragma once

// Without arguments. Throws an OrvaUtils::Exception with "Cannot start default helper".
void startInstalledHelper();
// With "-wait", for the restore in progress. Throws an OrvaUtils::Exception with "Cannot start tarvex".
void startApplication();
