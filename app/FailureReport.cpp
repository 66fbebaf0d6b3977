#include "app/FailureReport.h"

#include "OrvaUtils/Exception.h"
#include "OrvaUtils/Text.h"
#include "app/ExitCode.h"
#include "app/log/Logger.h"

#include <cstdlib>
#include <new>
#include <typeinfo>

namespace {

// The compiler's name of OrvaUtils::Exception is "N9OrvaUtils9ExceptionE", and that of EMMCException is
// "13EMMCException". A name of any other form, such as that of a template, stays as it is.
std::wstring mostDerivedClass(const OrvaUtils::Exception& exception) {
    const char* const mangled = typeid(exception).name();
    // A class in a namespace has the form N <length><name>... E.
    const bool nested = *mangled == 'N';
    const char* at = mangled + (nested ? 1 : 0);
    std::string name;
    while (*at >= '1' && *at <= '9') {
        char* part = nullptr;
        const std::size_t length = std::strtoul(at, &part, 10);
        name.append(name.empty() ? "" : "::").append(part, length);
        at = part + length;
    }
    return OrvaUtils::widen(*at == (nested ? 'E' : '\0') ? name.c_str() : mangled);
}

} // namespace

void reportFailure() {
    exitCode = 1;
    Logger& log = Logger::instance();
    try {
        // This throws the exception in flight again, to find out its class.
        throw;
    } catch (const OrvaUtils::Exception& exception) {
        try {
            log.writeParts(LogLevel::Error, {L"Exception ", mostDerivedClass(exception), L": ", exception.message()});
        } catch (const std::bad_alloc&) {
            // The name of the class does not fit into memory: the line is lost.
        }
    } catch (...) {
        log.writeParts(LogLevel::Error, {L"Unexpected error"});
    }
}
