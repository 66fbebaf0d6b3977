#include "OrvaUtils/Xml/DocumentFile.h"

#include <crt.h>

#include <cstdio>
#include <memory>
#include <new>
#include <tinyxml2.h>

namespace OrvaUtils::Xml {

bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(_wfopen(path.c_str(), L"rb"), std::fclose);
    try {
        return file != nullptr && document.LoadFile(file.get()) == tinyxml2::XML_SUCCESS;
    } catch (const std::bad_alloc&) { // more than the heap holds
        document.Clear();
        return false;
    }
}

bool saveDocument(tinyxml2::XMLDocument& document, const std::wstring& path) {
    std::FILE* file = _wfopen(path.c_str(), L"wb");
    if (file == nullptr) {
        return false;
    }
    document.SaveFile(file, false);
    const bool written = std::ferror(file) == 0; // the library does not look
    return std::fclose(file) == 0 && written;
}

} // namespace OrvaUtils::Xml
