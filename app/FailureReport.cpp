#include "app/FailureReport.h"

#include "OrvaUtils/Exception.h"
#include "OrvaUtils/Text.h"
#include "app/ExitCode.h"
#include "app/log/Logger.h"

#include <cstdlib>
#include <new>
#include <typeinfo>

namespace {

// The compiler calls OrvaUtils::Exception "N9OrvaUtils9ExceptionE" and EMMCException "13EMMCException". A name of any
// other form (a template's, say) stays as it is.
std::wstring mostDerivedClass(const OrvaUtils::Exception& exception) {
    const char* const mangled = typeid(exception).name();
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
        throw;
    } catch (const OrvaUtils::Exception& exception) {
        try {
            log.writeParts(LogLevel::Error, {L"Exception ", mostDerivedClass(exception), L": ", exception.message()});
        } catch (const std::bad_alloc&) { // memory is too short for the class's name: the line is lost
        }
    } catch (...) {
        log.writeParts(LogLevel::Error, {L"Unexpected error"});
    }
}
