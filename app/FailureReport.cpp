#include "app/FailureReport.h"

#include "OrvaUtils/Exception.h"
#include "OrvaUtils/Text.h"
#include "app/ExitCode.h"
#include "app/log/Logger.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

namespace {

std::wstring mostDerivedClass(const OrvaUtils::Exception& exception) {
    const char* const mangled = typeid(exception).name();
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                      std::free);
    return OrvaUtils::widen(name != nullptr ? name.get() : mangled);
}

} // namespace

void reportFailure() {
    Logger& log = Logger::instance();
    try {
        throw;
    } catch (const OrvaUtils::Exception& exception) {
        if (log.admits(LogLevel::Error)) {
            log.writeParts(LogLevel::Error, {L"Exception ", mostDerivedClass(exception), L": ", exception.message()});
        }
    } catch (...) {
        log.writeParts(LogLevel::Error, {L"Unexpected error"});
    }
    exitCode = 1;
}
