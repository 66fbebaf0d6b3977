#include "app/Autorun.h"

#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Registry/Writing.h"
#include "OrvaUtils/Text.h"
#include "app/Paths.h"

using namespace OrvaUtils::Registry;

namespace {

constexpr wchar_t START_LIST[] = L"init";
// The number 61 is the position of the helper in the order of start.
constexpr wchar_t PROGRAM[] = L"Launch61";
constexpr wchar_t PREDECESSORS[] = L"Depend61";

} // namespace

bool isAutorunConfigured() {
    // Deliberate: the data of "Depend61" do not matter as long as the value exists.
    if (!valueExists(HKEY_LOCAL_MACHINE, START_LIST, PROGRAM) ||
        !valueExists(HKEY_LOCAL_MACHINE, START_LIST, PREDECESSORS)) {
        return false;
    }
    return OrvaUtils::equalIgnoringCase(readString(HKEY_LOCAL_MACHINE, START_LIST, PROGRAM), Paths::HELPER);
}

void configureAutorun() {
    const Key key(createKey(HKEY_LOCAL_MACHINE, START_LIST, 0));
    writeString(key.handle(), PROGRAM, Paths::HELPER);
    // The helper starts after the program at position 50. The number has 16 bits, little-endian.
    writeBinary(key.handle(), PREDECESSORS, {50, 0});
    // Without a flush, a power cut could lose both values.
    flushKey(HKEY_LOCAL_MACHINE);
}
