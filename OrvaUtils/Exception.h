#pragma once

#include <string>
#include <utility>

namespace OrvaUtils {

// The base of every exception of the program: one wide message in fixed English words.
//
// It is deliberately no std::exception: whoever handles standard exceptions does not swallow the program's own. The
// log names the most derived class, so each room declares the classes of its failures, one line each:
//     class FileSystemException : public OrvaUtils::Exception { using OrvaUtils::Exception::Exception; };
class Exception {
public:
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
