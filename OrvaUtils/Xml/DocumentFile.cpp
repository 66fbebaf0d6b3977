#include "OrvaUtils/Xml/DocumentFile.h"

#include <crt.h>
#include <windows.h>

#include <cstdio>
#include <memory>
#include <new>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path) {
    // _wfopen uses the platform's file functions, so the library needs no path.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(_wfopen(path.c_str(), L"rb"), std::fclose);
    try {
        return file != nullptr && document.LoadFile(file.get()) == tinyxml2::XML_SUCCESS;
    } catch (const std::bad_alloc&) {
        // The file is larger than the free memory. The incomplete document is discarded.
        document.Clear();
        return false;
    }
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
