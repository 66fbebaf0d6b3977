#include "app/Launch.h"

#include "OrvaUtils/Concurrency/ISystem.h"
#include "OrvaUtils/Exception.h"
#include "app/Paths.h"

#include <memory>

namespace {

void startProgram(const wchar_t* path, const wchar_t* arguments, const wchar_t* failure) {
    using namespace OrvaUtils::Concurrency;
    const std::unique_ptr<IProcess> process(getSystem().createProcess(path, arguments, {}));
    // The destructor of the process object closes the handles; the program continues.
    if (process == nullptr || process->start() == nullptr) {
        throw OrvaUtils::Exception(failure);
    }
}

} // namespace

void startInstalledHelper() {
    startProgram(Paths::HELPER, L"", L"Cannot start default helper");
}

void startApplication() {
    startProgram(Paths::APPLICATION, L"-wait", L"Cannot start tarvex");
}
