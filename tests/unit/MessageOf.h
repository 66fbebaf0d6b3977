#pragma once

#include <functional>
#include <string>

// The message of the exception of this class that leaves the operation; "none" if none does.
template<class Exception>
std::wstring messageOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const Exception& exception) {
        return exception.message();
    }
    return L"none";
}
