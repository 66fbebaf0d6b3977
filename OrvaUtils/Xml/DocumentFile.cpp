#include "OrvaUtils/Xml/DocumentFile.h"

#include <windows.h>

#include <new>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

namespace {

bool readAll(HANDLE file, std::string& text) {
    char some[4096];
    DWORD size = 0;
    do {
        if (!ReadFile(file, some, sizeof some, &size, nullptr)) {
            return false;
        }
        text.append(some, size);
    } while (size == sizeof some);
    return true;
}

} // namespace

bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool loaded = false;
    try {
        std::string text;
        loaded = readAll(file, text) && document.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS;
    } catch (const std::bad_alloc&) { // more than the heap holds
        document.Clear();
    }
    CloseHandle(file);
    return loaded;
}

bool saveDocument(const tinyxml2::XMLDocument& document, const std::wstring& path) {
    // The document is printed before the file is opened: CREATE_ALWAYS empties the file, and memory may be short.
    tinyxml2::XMLPrinter text;
    try {
        document.Print(&text);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    // The size includes a terminating zero, which does not belong to the file.
    const auto size = static_cast<DWORD>(text.CStrSize()) - 1;
    DWORD written = 0;
    const bool complete = WriteFile(file, text.CStr(), size, &written, nullptr) && written == size;
    return CloseHandle(file) && complete;
}

} // namespace OrvaUtils::Xml
