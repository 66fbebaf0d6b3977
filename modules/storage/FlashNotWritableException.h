#pragma once

#include "OrvaUtils/Exception.h"

// The write protection of the NAND flash could not be switched, in either direction; the message is the base class's.
class FlashNotWritableException : public OrvaUtils::Exception {};
