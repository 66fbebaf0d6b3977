#pragma once

#include <exception>

namespace OrvaUtils {

// The steps of a destructor that may throw: each of them is done whatever the others do, and what failed first is
// thrown at the end, unless the destructor itself runs because of an exception.
class Teardown {
public:
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

    // Behind the last step.
    void finish() const {
        if (failure != nullptr && std::uncaught_exceptions() == 0) {
            std::rethrow_exception(failure);
        }
    }

private:
    std::exception_ptr failure;
};

} // namespace OrvaUtils
