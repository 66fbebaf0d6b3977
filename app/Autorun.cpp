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
constexpr wchar_t PROGRAM[] = L"Launch61"; // 61: its place in the order of start
constexpr wchar_t PREDECESSORS[] = L"Depend61";

} // namespace

bool isAutorunConfigured() {
    // Deliberate: which programs the helper waits for is nobody's concern, as long as there is a value.
    if (!valueExists(HKEY_LOCAL_MACHINE, START_LIST, PROGRAM) ||
        !valueExists(HKEY_LOCAL_MACHINE, START_LIST, PREDECESSORS)) {
        return false;
    }
    return OrvaUtils::equalIgnoringCase(readString(HKEY_LOCAL_MACHINE, START_LIST, PROGRAM), Paths::HELPER);
}

void configureAutorun() {
    const Key key(createKey(HKEY_LOCAL_MACHINE, START_LIST, 0));
    writeString(key.handle(), PROGRAM, Paths::HELPER);
    writeBinary(key.handle(), PREDECESSORS, {50, 0}); // the program at place 50, in 16 bits
    flushKey(HKEY_LOCAL_MACHINE);
}
