#include "OrvaUtils/Registry/Key.h"

#include "OrvaUtils/Registry/Registry.h"

namespace OrvaUtils::Registry {

Key::Key(HKEY parent, const std::wstring& subkey) : key(openKey(parent, subkey)) {}

Key::Key(HKEY opened) : key(opened) {}

Key::~Key() {
    RegCloseKey(key);
}

HKEY Key::handle() const {
    return key;
}

} // namespace OrvaUtils::Registry
