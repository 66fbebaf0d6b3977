#pragma once

// The helper's resident life, on the main thread: serves messages until the command to end. Failures are logged and in
// the exit code; a normal end makes that 0.
void RunModuleManager();
