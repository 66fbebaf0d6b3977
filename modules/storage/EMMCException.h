#pragma once

#include "OrvaUtils/Exception.h"

// What the eMMC statistics monitor reports.
class EMMCException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
