#include "modules/usbconfig/RunProcessCommand.h"

#include "OrvaUtils/Concurrency/ISystem.h"

#include <vector>

using OrvaUtils::Concurrency::IProcess;

namespace {

constexpr int RUN_PROCESS = 0;

// Deliberately never deleted: the handles of what was started stay open for the life of the helper.
void keepForGood(IProcess* process) {
    static auto* const kept = new std::vector<IProcess*>;
    kept->push_back(process);
}

} // namespace

int RunProcessCommand::getType() const {
    return RUN_PROCESS;
}

void RunProcessCommand::execute() {
    IProcess* const process = OrvaUtils::Concurrency::getSystem().createProcess(filePath, arguments, {});
    if (process == nullptr) {
        return; // memory is short
    }
    keepForGood(process);
    const HANDLE handle = process->start();
    if (waitCompletion) {
        WaitForSingleObject(handle, INFINITE); // of a program that was not started: fails at once
    }
}
