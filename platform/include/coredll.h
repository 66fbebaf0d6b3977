// Declares every function of coredll.inc, for code that takes the addresses of all of them.
#pragma once

#include <msgqueue.h>
#include <pnp.h>
#include <storemgr.h>
#include <windows.h>
