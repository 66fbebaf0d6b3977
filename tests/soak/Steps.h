// The steps of random lives.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

class Life;

struct Step {
    std::string text; // for people
    std::function<void(Life&)> take;
};

// The step with this number, from 1, of the life with this seed. It depends on nothing else, so a life can be repeated
// with some of its steps alone.
Step stepOf(std::uint64_t seed, std::uint32_t number);
