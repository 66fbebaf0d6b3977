// The commands of `panel`. Each function adds its commands to the application. Both arguments must live until the
// application has run.
//
// A command that fails throws std::runtime_error with a text for people, which names the problem and the remedy. A
// command that was used wrongly throws Misuse (Units.h).
#pragma once

#include "platform/tool/Tool.h"

namespace tool {

void addPowerCommands(CLI::App& app, Tool& tool); // create, boot, off, cut, advance
void addDiskCommands(CLI::App& app, Tool& tool); // plug, mount, unplug
void addDeviceCommand(CLI::App& app, Tool& tool);
void addTagCommands(CLI::App& app, Tool& tool);
void addOperatorCommands(CLI::App& app, Tool& tool); // touch, idle, active
void addStartCommand(CLI::App& app, Tool& tool);
void addProcessCommands(CLI::App& app, Tool& tool); // ps, wait, kill
void addSendCommand(CLI::App& app, Tool& tool);
void addStatusCommand(CLI::App& app, Tool& tool);
void addRegistryCommands(CLI::App& app, Tool& tool); // list, read, write, delete
void addFileCommands(CLI::App& app, Tool& tool); // attributes
void addLogCommand(CLI::App& app, Tool& tool);
void addTraceCommands(CLI::App& app, Tool& tool);
void addFaultCommands(CLI::App& app, Tool& tool);
void addViewCommand(CLI::App& app, Tool& tool);

} // namespace tool
