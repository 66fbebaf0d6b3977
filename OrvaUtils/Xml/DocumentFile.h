// XML documents in files. The library never sees a file: it parses and prints memory.
#pragma once

#include <string>

namespace tinyxml2 {
class XMLDocument;
}

namespace OrvaUtils::Xml {

// False when the file cannot be opened, is no XML, or is more than the heap holds; the document then holds nothing of
// use.
bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path);
// Replaces the file, whose directory must exist, with one WriteFile. False when memory runs out or the file cannot be
// opened: it is then as it was. False, too, when it could not be written as a whole: it may then be cut short.
bool saveDocument(const tinyxml2::XMLDocument& document, const std::wstring& path);

} // namespace OrvaUtils::Xml
