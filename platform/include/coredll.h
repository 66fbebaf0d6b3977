// Every function of coredll.inc, for those who take their addresses.
#pragma once

#include <msgqueue.h>
#include <pnp.h>
#include <storemgr.h>
#include <windows.h>
