// The gate: an object that every API function of the simulated panel creates first.
//
// The constructor counts the call and applies the injected faults. A fault that cuts the power ends the process in the
// constructor. Only with StoragePolicy::torn does a power cut at a WriteFile end the process in the destructor, after
// the call has written. Otherwise the destructor writes the line of the trace, then wakes the threads that the call has
// released. A function looks like this:
//
//     BOOL ReleaseMutex(HANDLE mutex) noexcept {
//         Gate gate(Function::ReleaseMutex, mutex);
//         if (gate.faulted())
//             return gate.fault<BOOL>();
//         ...
//         return gate.fails(FALSE, ERROR_NOT_OWNER);   or   return gate.done(TRUE);
//
// Declare the gate before any Lock of the function, so that the locks are released before the gate's destructor runs. A
// gate lives on the stack of the calling thread. Gates nest if a callback of the program calls the API again.
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Wait.h"

#include <windows.h>

#include <optional>
#include <string>
#include <type_traits>

namespace panel {

// Formats arguments and results for the trace. Each function appends to `text`.
namespace trace {

void add(std::string& text, std::int64_t value); // decimal
void add(std::string& text, const wchar_t* value); // in quotes; "null" for a null pointer
void addHandle(std::string& text, std::uintptr_t value); // hexadecimal; "null" for 0 and "-1" for all bits set
void addHex(std::string& text, std::uint64_t value); // hexadecimal with "0x"
void addBytes(std::string& text, const void* bytes, std::size_t count); // the first 64 bytes, in braces

// Wrappers that choose the format of an argument.
struct Hex { // a number in hexadecimal
    std::uint64_t value;
};
struct Word { // a text without quotes
    std::string text;
};

struct Bytes { // the content of a buffer
    const void* at;
    std::size_t count;
};

// Appends a value in the format that its type asks for.
template<class Value>
void addAny(std::string& text, const Value& value) {
    if constexpr (std::is_same_v<Value, Hex>)
        addHex(text, value.value);
    else if constexpr (std::is_same_v<Value, Bytes>)
        addBytes(text, value.at, value.count);
    else if constexpr (std::is_same_v<Value, Word>)
        text += value.text;
    else if constexpr (std::is_convertible_v<Value, const wchar_t*>)
        add(text, static_cast<const wchar_t*>(value));
    else if constexpr (std::is_pointer_v<Value>)
        addHandle(text, reinterpret_cast<std::uintptr_t>(value));
    else
        add(text, static_cast<std::int64_t>(value));
}

} // namespace trace

class Gate {
public:
    // `arguments` are the call's arguments as the trace shows them.
    template<class... Arguments>
    explicit Gate(Function called, const Arguments&... arguments) : Gate(called, Plain{}) {
        (shows(arguments), ...);
        begin();
    }
    ~Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    // Returns whether a fault makes this call fail. The function must then return fault() and change nothing.
    // Only ReadFile and WriteFile still set the count of bytes to 0.
    bool faulted() const {
        return faultHit;
    }
    // Completes a call that fails because of a fault: sets the last error that coredll.inc gives for the function and
    // returns the failure result. If the fault names a result of its own (`--answer`), that result is returned instead.
    template<class Result>
    Result fault() {
        const FunctionFacts& known = facts(call.function);
        thread.lastError = known.lastError;
        note("error " + std::to_string(known.lastError));
        if constexpr (std::is_pointer_v<Result>)
            return done(reinterpret_cast<Result>(static_cast<std::intptr_t>(failure.value_or(known.failure))));
        else
            return done(static_cast<Result>(failure.value_or(known.failure)));
    }

    // Notes the call's result for the trace and returns it. The trace shows a pointer as the number of a handle.
    template<class Result>
    Result done(Result value) {
        if (tracing)
            trace::addAny(result, value);
        return value;
    }
    // Returns `value`, but the trace shows `shown`. Use it for a result that differs from run to run, like an address.
    template<class Result, class Shown>
    Result doneAs(Result value, const Shown& shown) {
        static_cast<void>(done(shown));
        return value;
    }
    // Sets the last error, notes a failure and returns `value`.
    template<class Result>
    Result fails(Result value, DWORD error) {
        thread.lastError = error;
        note("error " + std::to_string(error));
        return done(value);
    }
    // Adds an argument to the line of the trace, for example data that the call has read.
    template<class Value>
    void shows(const Value& value) {
        if (!call.arguments.empty())
            call.arguments += ", ";
        trace::addAny(call.arguments, value);
    }
    // Adds a remark after the result in the line of the trace.
    void note(const std::string& what) {
        if (tracing)
            notes += ' ' + what;
    }

    Image& image() {
        return runtime.image();
    }
    // The calling thread's slot.
    Slot slot() const {
        return thread.slot;
    }
    // The calling process's slot.
    Slot process() const {
        return runtime.process();
    }
    void setLastError(DWORD error) {
        thread.lastError = error;
    }
    // Wakes the threads that the call has released so far. Call it, without the kernel's lock, before a callback of the
    // program runs.
    void deliverWakes();

    Runtime& runtime;
    ThreadContext& thread;

private:
    struct Plain {};
    Gate(Function called, Plain);
    void begin();
    bool isMeant(const FaultRecord& fault) const;
    void applyFaults();
    [[noreturn]] void cutPower(Lock& lock, std::uint32_t sectors);

    PlatformCall call;
    bool tracing;
    bool faultHit = false;
    std::optional<std::uint32_t> tears; // power cut after the call has written: sectors of each file that stay
    std::optional<std::int64_t> failure; // the result that the fault names; empty: the failure result from coredll.inc
    std::uint64_t begun = 0; // panel time in ms at the start of the call
    std::string result;
    std::string notes; // remarks after the result
};

} // namespace panel
