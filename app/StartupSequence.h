#pragma once

#include "app/StartupContext.h"

// Runs the steps that repair the panel's installation. Call it once, on the main thread.
//
// If the helper was started from its installation path (case-insensitive), the steps are, in this order: delete
// leftovers of earlier installations, clean up the Zentrix runtime, write the autorun entries, write the file
// association, save the settings, and start the application if a restore is in progress. If the helper was started from
// anywhere else, it installs itself and the application if the helper is not installed, deletes the file or folder that
// it was started from, and sets `restartNeeded`.
//
// A step that cannot be completed throws an OrvaUtils::Exception; the later steps are then not done.
void RunStartupSequence(StartupContext& context);
