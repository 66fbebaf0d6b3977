#include "OrvaUtils/Xml/DocumentFile.h"

#include <crt.h>
#include <windows.h>

#include <cstdio>
#include <memory>
#include <new>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

namespace {

// A smaller file is read with one ReadFile, into the stack. The frame must stay below one page (4 KB): no code touches
// the pages of a larger one in their order, which a panel's stack may need to grow.
constexpr DWORD SMALL_SIZE = 3072;

} // namespace

bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    char text[SMALL_SIZE];
    DWORD size = 0;
    const bool read = ReadFile(file, text, sizeof text, &size, nullptr);
    CloseHandle(file);
    try {
        // ReadFile is assumed to fill the buffer unless the file ends: no further call looks for the end.
        if (!read || size < sizeof text) {
            return read && document.Parse(text, size) == tinyxml2::XML_SUCCESS;
        }
        // `Parse` copies the text. A stream avoids the copy: a large file must fit into memory once only.
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(_wfopen(path.c_str(), L"rb"), std::fclose);
        return stream != nullptr && document.LoadFile(stream.get()) == tinyxml2::XML_SUCCESS;
    } catch (const std::bad_alloc&) { // more than the heap holds
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
