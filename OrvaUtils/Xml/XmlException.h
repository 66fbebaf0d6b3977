#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::Xml {

// An XML document cannot be read, or a required element or attribute is missing.
class XmlException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::Xml
