#pragma once

// To be called in a `catch (...)`: logs the exception in flight as an error and makes the exit code 1. The program's
// own exceptions give "Exception <most derived class>: <message>", all others "Unexpected error".
void reportFailure();
