#pragma once

// Logs the exception in flight at ERROR and sets the exit code to 1. Call it in a `catch (...)` on the main thread.
//
// The line is "Exception <most derived class>: <message>" for an OrvaUtils::Exception and "Unexpected error" for any
// other exception. If memory is short, the line is lost. No exception leaves this function.
void reportFailure();
