// Requests to drivers.
#include "platform/panel/Devices.h"
#include "platform/panel/Gate.h"
#include "platform/panel/api/DriverFiles.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Wait.h"

#include <cstring>

using namespace panel;

namespace {

constexpr std::uint32_t longestBeep = 1000; // ms

struct Buffers {
    const void* input;
    DWORD inputSize;
    void* output;
    DWORD outputSize;
};

const OperationFacts* operationOf(const DeviceFacts& device, DWORD code) {
    for (const OperationFacts& operation : device.operations)
        if (operation.code == code)
            return &operation;
    return nullptr;
}

// Executes a request in the simulated hardware. `words` holds the input or receives the output. Returns a Windows
// error.
DWORD perform(Image& image, const DeviceState& state, std::string_view operation, std::vector<std::uint32_t>& words) {
    if (operation == "read") {
        words.assign(std::begin(image.backLight), std::end(image.backLight));
    } else if (operation == "write") {
        std::copy(words.begin(), words.end(), image.backLight);
    } else if (operation == "beep") {
        if (words[1] > longestBeep)
            return ERROR_INVALID_PARAMETER;
    } else if (operation == "count") {
        words = state.values;
    } else {
        image.flashWritable = operation == "writable";
    }
    return 0;
}

// Executes a request as the device behaves now, and records it. May leave the lock meanwhile; holds it again on return.
DWORD control(Gate& gate, Lock& lock, const DeviceFacts& device, const OperationFacts& operation,
              const Buffers& buffers) {
    Image& image = gate.image();
    const Devices devices(gate.runtime.directory());
    Request request{0,
                    processes::name(image, gate.runtime.processRecord()),
                    gate.thread.number,
                    std::string(device.name),
                    std::string(operation.name),
                    {},
                    0};
    request.words.resize(buffers.inputSize / 4);
    if (buffers.inputSize)
        std::memcpy(request.words.data(), buffers.input, buffers.inputSize);
    DWORD error = 0;
    try {
        const DeviceState state = behavesAs(gate, lock, device.name, operation.name, error);
        if (!error)
            error = perform(image, state, operation.name, request.words);
    } catch (const std::exception&) { // an unreadable file counts as a broken device
        error = ERROR_GEN_FAILURE;
    }
    if (operation.output && !error)
        std::memcpy(buffers.output, request.words.data(), operation.output);
    request.time = clock::now(image);
    request.error = error;
    devices.note(request);
    return error;
}

} // namespace

namespace panel {

DeviceState behavesAs(Gate& gate, Lock& lock, std::string_view device, std::string_view operation, DWORD& error) {
    Image& image = gate.image();
    std::uint64_t end = 0; // end of the delay; it counts from the first look, even if the delay changes later
    for (;;) {
        DeviceState state = Devices(gate.runtime.directory()).state(device);
        const Behaviour behaviour = state.behaviour(operation);
        const bool delayed = behaviour.kind == Behaviour::Kind::delay;
        if (delayed && end == 0)
            end = clock::deadline(image, behaviour.number);
        error = behaviour.kind == Behaviour::Kind::refuse ? behaviour.number : 0;
        if (behaviour.kind != Behaviour::Kind::block && !(delayed && clock::now(image) < end))
            return state;
        scheduler::at(image, gate.slot()).waitKind = WaitKind::device;
        block(lock, image, gate.slot(), delayed ? end : never);
    }
}

HANDLE openDriver(Gate& gate, Lock& lock, const DeviceFacts& device) {
    DWORD error = 0;
    try {
        if (!behavesAs(gate, lock, device.name, "open", error).present)
            error = ERROR_FILE_NOT_FOUND;
    } catch (const std::exception&) {
        error = ERROR_FILE_NOT_FOUND;
    }
    if (error)
        return gate.fails(INVALID_HANDLE_VALUE, error);
    const Slot object = objects::make(gate.image(), ObjectType::device);
    const std::uint32_t handle = object ? objects::openHandle(gate.image(), gate.process(), object) : 0;
    if (!handle) {
        if (object)
            objects::at(gate.image(), object).type = ObjectType::free;
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_NOT_ENOUGH_MEMORY);
    }
    objects::at(gate.image(), object).subject = static_cast<Slot>(&device - knownDevices().data() + 1);
    gate.setLastError(ERROR_SUCCESS);
    return gate.done(handleOf(handle));
}

} // namespace panel

BOOL DeviceIoControl(HANDLE handle, DWORD code, LPVOID input, DWORD inputSize, LPVOID output, DWORD outputSize,
                     DWORD* returned, void*) noexcept {
    Gate gate(Function::DeviceIoControl, handle, trace::Hex{code}, trace::Bytes{input, input ? inputSize : 0});
    if (gate.faulted())
        return gate.fault<BOOL>();
    Lock lock(gate.image());
    const Slot object = objects::resolve(gate.image(), gate.process(), numberOf(handle));
    if (!object || objects::at(gate.image(), object).type != ObjectType::device)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    const DeviceFacts& device = knownDevices()[objects::at(gate.image(), object).subject - 1];
    const OperationFacts* operation = operationOf(device, code);
    if (!operation)
        return gate.fails(FALSE, ERROR_NOT_SUPPORTED);
    if (inputSize != operation->input || (inputSize && !input) || outputSize < operation->output ||
        (operation->output && !output))
        return gate.fails(FALSE, ERROR_INVALID_PARAMETER);
    if (const DWORD error = control(gate, lock, device, *operation, {input, inputSize, output, outputSize}))
        return gate.fails(FALSE, error);
    if (returned)
        *returned = operation->output;
    gate.shows(trace::Bytes{output, operation->output});
    return gate.done(TRUE);
}
