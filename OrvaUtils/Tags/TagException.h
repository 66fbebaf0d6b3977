#pragma once

#include "OrvaUtils/Exception.h"

#include <cstdint>
#include <string>
#include <utility>

namespace OrvaUtils::Tags {

// A function of the tag library failed. The message is the name of the function, for example "TAG_Get_Data".
class TagException : public Exception {
public:
    // `function` is the name of the function that failed.
    TagException(std::wstring function, std::uint32_t errorCode) : Exception(std::move(function)), code(errorCode) {}

    // Returns the error code that the function reported; only the library defines its meaning. 0 if the function failed
    // without an error code.
    std::uint32_t errorCode() const {
        return code;
    }

private:
    std::uint32_t code;
};

} // namespace OrvaUtils::Tags
