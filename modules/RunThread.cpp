#include "modules/RunThread.h"

#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"

DWORD runThread(DWORD (*body)(LPVOID), LPVOID argument) noexcept {
    try {
        return body(argument);
    } catch (const OrvaUtils::Exception& exception) {
        // A monitor whose thread ends here is not started again; the line in the log is the only sign.
        Logger::instance().write(exception.message(), LogLevel::Error);
    } catch (...) {
        Logger::instance().write(L"Generic exception", LogLevel::Error);
    }
    return 0;
}
