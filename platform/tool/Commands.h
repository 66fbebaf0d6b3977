// The commands of `panel`. Each function adds its commands to the application. Both arguments must live until the
// application has run.
//
// A command that fails throws std::runtime_error with a text for people, which names the problem and the remedy. A
// command that was used wrongly throws Misuse (Units.h).
#pragma once

#include "platform/tool/Tool.h"

namespace tool {

// create, boot, off, cut, storage, advance
void addPowerCommands(CLI::App& app, Tool& tool);
// plug, mount, unplug
void addDiskCommands(CLI::App& app, Tool& tool);
// device with its actions: show, refuse, block, delay, code, answer, set, add, remove
void addDeviceCommand(CLI::App& app, Tool& tool);
// tag list, tag set, tag remove
void addTagCommands(CLI::App& app, Tool& tool);
// touch, idle, active
void addOperatorCommands(CLI::App& app, Tool& tool);
// start. Its words behind "--" come from Tool::behindDashes
void addStartCommand(CLI::App& app, Tool& tool);
// ps, kill
void addProcessCommands(CLI::App& app, Tool& tool);
// wait
void addWaitCommand(CLI::App& app, Tool& tool);
void addSendCommand(CLI::App& app, Tool& tool);
void addStatusCommand(CLI::App& app, Tool& tool);
// registry list, read, write, delete, export, import
void addRegistryCommands(CLI::App& app, Tool& tool);
// attributes
void addFileCommands(CLI::App& app, Tool& tool);
void addLogCommand(CLI::App& app, Tool& tool);
// trace show, export, on, off, clear
void addTraceCommands(CLI::App& app, Tool& tool);
// fault add, list, release, clear, functions
void addFaultCommands(CLI::App& app, Tool& tool);
void addReportCommand(CLI::App& app, Tool& tool);
// completion
void addCompletionCommand(CLI::App& app);
// view, which runs the program panel-view
void addViewCommand(CLI::App& app, Tool& tool);

} // namespace tool
