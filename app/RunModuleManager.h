#pragma once

// Runs the resident part of the helper: builds the monitors and modules, serves messages until the terminate command,
// and tears everything down. Call it once, on the main thread, after InitializeHelper has returned true.
//
// Failures are logged and set the exit code to 1. A normal end of the message loop sets the exit code to 0. Nothing is
// thrown.
void RunModuleManager();
