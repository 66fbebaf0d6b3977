#include "app/log/Decimal.h"

namespace {

// Multiplies instead of dividing: a division takes the panel's processor about a hundred instructions.
std::uint32_t tenthOf(std::uint32_t number) {
    return static_cast<std::uint32_t>(std::uint64_t{number} * 0xCCCCCCCD >> 35);
}

} // namespace

char* putDecimal(char* at, std::uint32_t number, unsigned digits) {
    constexpr std::uint32_t BEYOND[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
    while (digits < 10 && number >= BEYOND[digits]) {
        ++digits;
    }
    char* const end = at + digits;
    char* digit = end;
    do {
        const std::uint32_t tenth = tenthOf(number);
        *--digit = static_cast<char>('0' + (number - 10 * tenth));
        number = tenth;
    } while (digit != at);
    return end;
}
