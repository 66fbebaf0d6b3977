#include "app/FileAssociation.h"

#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/Reading.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Registry/Writing.h"
#include "app/Paths.h"

#include <string>

using namespace OrvaUtils::Registry;

namespace {

// The default value of a key has an empty name.
constexpr wchar_t DEFAULT_VALUE[] = L"";
constexpr wchar_t EXTENSION[] = L".osr";
constexpr wchar_t NEW_FILE[] = L".osr\\ShellNew";
constexpr wchar_t FILE_CLASS[] = L"osrfile";
constexpr wchar_t ICON[] = L"osrfile\\DefaultIcon";
constexpr wchar_t OPEN_COMMAND[] = L"osrfile\\shell\\open\\command";
// Selects the icon within Tarvex.exe.
constexpr wchar_t ICON_NUMBER[] = L",-128";
constexpr wchar_t FILE_ARGUMENT[] = L"\" \"%1\"";

std::wstring openCommand() {
    return std::wstring(L"\"") + Paths::APPLICATION + FILE_ARGUMENT;
}

// A missing key or value is no failure here: it means that the association is not configured.
bool holds(const wchar_t* path, const std::wstring& text) {
    return valueExists(HKEY_CLASSES_ROOT, path, DEFAULT_VALUE) &&
           readString(HKEY_CLASSES_ROOT, path, DEFAULT_VALUE) == text;
}

void put(const wchar_t* path, const wchar_t* name, const std::wstring& text) {
    const Key key(createKey(HKEY_CLASSES_ROOT, path, 0));
    writeString(key.handle(), name, text);
}

} // namespace

bool isAssociationConfigured() {
    return holds(EXTENSION, FILE_CLASS) && holds(OPEN_COMMAND, openCommand());
}

void configureAssociation() {
    put(FILE_CLASS, DEFAULT_VALUE, L"Orva Software Repository");
    put(ICON, DEFAULT_VALUE, std::wstring(Paths::APPLICATION) + ICON_NUMBER);
    put(OPEN_COMMAND, DEFAULT_VALUE, openCommand());
    put(EXTENSION, DEFAULT_VALUE, FILE_CLASS);
    put(NEW_FILE, L"NullFile", L"");
}
