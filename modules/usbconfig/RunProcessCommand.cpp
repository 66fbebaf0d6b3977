#include "modules/usbconfig/RunProcessCommand.h"

#include "OrvaUtils/Concurrency/ISystem.h"
#include "modules/KeepUntilProcessEnds.h"

namespace {

// The kind of command.
constexpr int RUN_PROCESS = 0;

} // namespace

int RunProcessCommand::getType() const {
    return RUN_PROCESS;
}

void RunProcessCommand::execute() {
    auto* const process = OrvaUtils::Concurrency::getSystem().createProcess(filePath, arguments, {});
    if (process == nullptr) {
        // Memory is short. The program is not started, and nothing is reported.
        return;
    }
    // Deliberate: the object is never deleted, so the handles of the child stay open.
    keepUntilProcessEnds(process);
    const HANDLE handle = process->start();
    if (waitCompletion) {
        // If the program was not started, the handle is null and the wait fails at once.
        WaitForSingleObject(handle, INFINITE);
    }
}
