#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::Xml {

// A document that cannot be read, or lacks what is required in it.
class XmlException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::Xml
