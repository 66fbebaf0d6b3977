#include "modules/usbconfig/RunProcessCommand.h"

#include "OrvaUtils/Concurrency/ISystem.h"
#include "modules/KeepUntilProcessEnds.h"

namespace {

constexpr int RUN_PROCESS = 0;

} // namespace

int RunProcessCommand::getType() const {
    return RUN_PROCESS;
}

void RunProcessCommand::execute() {
    auto* const process = OrvaUtils::Concurrency::getSystem().createProcess(filePath, arguments, {});
    if (process == nullptr) {
        return; // memory is short
    }
    keepUntilProcessEnds(process); // deliberate: the handles of what was started stay open
    const HANDLE handle = process->start();
    if (waitCompletion) {
        WaitForSingleObject(handle, INFINITE); // of a program that was not started: fails at once
    }
}
