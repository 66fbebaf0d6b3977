#pragma once

#include <string>
#include <utility>

namespace OrvaUtils {

// The base class of all exceptions of the helper: one message of wide characters, a fixed English text.
//
// The class is deliberately not derived from std::exception, so that handlers of standard exceptions do not catch it.
// The log names the most derived class. Each part of the helper therefore declares its own classes, for example:
//
//     class FileSystemException : public OrvaUtils::Exception { using OrvaUtils::Exception::Exception; };
class Exception {
public:
    // The message is "Generic Exception".
    Exception() = default;
    explicit Exception(std::wstring message) : text(std::move(message)) {}
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception() = default;

    const std::wstring& message() const {
        return text;
    }

private:
    std::wstring text = L"Generic Exception";
};

} // namespace OrvaUtils
