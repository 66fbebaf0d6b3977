#pragma once

#include <exception>

namespace OrvaUtils {

// Runs the steps of a destructor that may throw. Every step runs, even if an earlier step threw. `finish` then throws
// the first exception, unless the destructor runs during stack unwinding.
//
//     OrvaUtils::Teardown steps;
//     steps.run([&] { close(first); });
//     steps.run([&] { close(second); });
//     steps.finish();
class Teardown {
public:
    // Runs one step at once and catches its exception. Later exceptions are dropped.
    template<typename Step>
    void run(Step step) {
        try {
            step();
        } catch (...) {
            if (failure == nullptr) {
                failure = std::current_exception();
            }
        }
    }

    // Call it once, after the last step. Throws the first exception that a step threw. Throws nothing while another
    // exception is in flight: a second exception would end the process.
    void finish() const {
        if (failure != nullptr && std::uncaught_exceptions() == 0) {
            std::rethrow_exception(failure);
        }
    }

private:
    std::exception_ptr failure;
};

} // namespace OrvaUtils
