// XML documents in files. The library never sees a path, only a file that was opened here.
#pragma once

#include <string>

namespace tinyxml2 {
class XMLDocument;
}

namespace OrvaUtils::Xml {

// False when the file cannot be opened, is no XML, or is more than the heap holds; the document then holds nothing of
// use.
bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path);
// Replaces the file, whose directory must exist. False when it could not be opened or not be written as a whole: it may
// then be cut short.
bool saveDocument(tinyxml2::XMLDocument& document, const std::wstring& path);

} // namespace OrvaUtils::Xml
