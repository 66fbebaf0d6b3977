#pragma once

#include "OrvaUtils/Exception.h"

#include <cstdint>
#include <string>
#include <utility>

namespace OrvaUtils::Tags {

// A function of the tag library failed: the message is the function's name, such as "TAG_Get_Data".
class TagException : public Exception {
public:
    TagException(std::wstring function, std::uint32_t errorCode) : Exception(std::move(function)), code(errorCode) {}

    // What the function reported; its meaning is the library's. 0 for one that failed without saying why.
    std::uint32_t errorCode() const {
        return code;
    }

private:
    std::uint32_t code;
};

} // namespace OrvaUtils::Tags
