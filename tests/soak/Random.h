// Random numbers, the same on every machine for the same seed.
#pragma once

#include <cstddef>
#include <cstdint>

class Random {
public:
    explicit Random(std::uint64_t seed) : state(seed) {}

    std::uint32_t below(std::uint32_t bound) {
        state += 0x9E3779B97F4A7C15;
        std::uint64_t mixed = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        return static_cast<std::uint32_t>(((mixed >> 32) * bound) >> 32);
    }
    bool once(std::uint32_t in) {
        return below(in) == 0;
    }
    template<class Value, std::size_t count>
    const Value& of(const Value (&values)[count]) {
        return values[below(count)];
    }

private:
    std::uint64_t state;
};
