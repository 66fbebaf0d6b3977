// Functions that start the installed programs. They do not wait for the program and do not keep its handles. Failures
// throw an OrvaUtils::Exception.
#pragma once

// Starts \MMCMemory\Tarvex\TarvexHelper.exe without arguments. Throws "Cannot start default helper".
void startInstalledHelper();
// Starts \MMCMemory\Tarvex\Tarvex.exe with "-wait", so that it continues a restore. Throws "Cannot start tarvex".
void startApplication();
