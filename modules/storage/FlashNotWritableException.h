#pragma once

#include "OrvaUtils/Exception.h"

// The write protection of the NAND flash could not be switched on or off. The message is "Generic Exception".
class FlashNotWritableException : public OrvaUtils::Exception {};
