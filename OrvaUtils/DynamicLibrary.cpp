#include "OrvaUtils/DynamicLibrary.h"

#include "OrvaUtils/LoadLibraryException.h"

#include <utility>

namespace OrvaUtils {

DynamicLibrary::DynamicLibrary(std::wstring libraryName, Lifetime libraryLifetime)
    : name(std::move(libraryName)), lifetime(libraryLifetime), library(LoadLibraryW(name.c_str())) {
    if (library == nullptr) {
        throw LoadLibraryException(L"Load " + name + L" failed");
    }
}

DynamicLibrary::~DynamicLibrary() {
    // With Lifetime::Process the library stays loaded, so its addresses stay valid when this object is gone.
    if (lifetime == Lifetime::Object) {
        FreeLibrary(library);
    }
}

void* DynamicLibrary::getAddress(const std::wstring& procedure) const {
    const FARPROC address = GetProcAddressW(library, procedure.c_str());
    if (address == nullptr) {
        throw LoadLibraryException(L"Get address of " + procedure + L" failed");
    }
    return reinterpret_cast<void*>(address);
}

} // namespace OrvaUtils
