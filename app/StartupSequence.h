#pragma once

#include "app/StartupContext.h"

// Repairs the panel's installation. From the installation path: leftovers of earlier installations, the Zentrix
// runtime, the helper's autorun, the application's file association, the settings, the follow-up of an interrupted
// restore. From anywhere else: installs what is missing and asks, in the context, for a restart. A step that fails for
// good throws an OrvaUtils::Exception.
void RunStartupSequence(StartupContext& context);
