// The gate that every API function passes on entry and exit: it counts the call, applies the faults that were asked
// for, writes the trace, and wakes whom the call has released.
//
//     BOOL ReleaseMutex(HANDLE mutex) noexcept {
//         Gate gate(Function::ReleaseMutex, mutex);
//         if (gate.faulted())
//             return gate.fault<BOOL>();
//         ...
//         return gate.fails(FALSE, ERROR_NOT_OWNER);   or   return gate.done(TRUE);
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Wait.h"

#include <windows.h>

#include <optional>
#include <string>
#include <type_traits>

namespace panel {

namespace trace {

void add(std::string& text, std::int64_t value);
void add(std::string& text, const wchar_t* value); // in quotes
void addHandle(std::string& text, std::uintptr_t value);
void addHex(std::string& text, std::uint64_t value);
void addBytes(std::string& text, const void* bytes, std::size_t count); // the first 64

struct Hex { // a number that is read better in hexadecimal
    std::uint64_t value;
};
struct Word { // as it is, without quotes
    std::string text;
};

struct Bytes { // what a buffer holds
    const void* at;
    std::size_t count;
};

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
    template<class... Arguments>
    explicit Gate(Function called, const Arguments&... arguments) : Gate(called, Plain{}) {
        (shows(arguments), ...);
    }
    ~Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    // A fault was asked for here: the call must have no effect and answer fault().
    bool faulted() const {
        return faultHit;
    }
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

    // The call's result; for pointers the handle's number is what the trace shows.
    template<class Result>
    Result done(Result value) {
        if (tracing)
            trace::addAny(result, value);
        return value;
    }
    // The same; the trace shows something that does not differ from run to run.
    template<class Result, class Shown>
    Result doneAs(Result value, const Shown& shown) {
        static_cast<void>(done(shown));
        return value;
    }
    template<class Result>
    Result fails(Result value, DWORD error) {
        thread.lastError = error;
        note("error " + std::to_string(error));
        return done(value);
    }
    // A further argument that is known only now.
    template<class Value>
    void shows(const Value& value) {
        if (!call.arguments.empty())
            call.arguments += ", ";
        trace::addAny(call.arguments, value);
    }
    // Something else to tell of the call, behind its result.
    void note(const std::string& what) {
        if (tracing)
            notes += ' ' + what;
    }

    Image& image() {
        return runtime.image();
    }
    Slot slot() const {
        return thread.slot;
    }
    Slot process() const {
        return runtime.process();
    }
    void setLastError(DWORD error) {
        thread.lastError = error;
    }
    // Wakes whom the call has released so far: before a callback of the program runs inside the call.
    void deliverWakes();

    Runtime& runtime;
    ThreadContext& thread;

private:
    struct Plain {};
    Gate(Function called, Plain);
    void applyFaults();

    PlatformCall call;
    bool tracing;
    bool faultHit = false;
    std::optional<std::int64_t> failure; // asked for instead of the list's
    std::uint64_t begun = 0; // panel time
    std::string result;
    std::string notes; // behind the result
};

} // namespace panel
