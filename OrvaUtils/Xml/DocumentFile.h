// Functions that load and save XML documents. The XML library never sees a path: it gets memory or a stream. Any thread
// may call.
#pragma once

#include <string>

namespace tinyxml2 {
class XMLDocument;
}

namespace OrvaUtils::Xml {

// Reads a file into `document`. Returns false if the file cannot be opened, is not well-formed XML or does not fit into
// memory. The document then has no useful content.
bool loadDocument(tinyxml2::XMLDocument& document, const std::wstring& path);
// Replaces the file with one WriteFile. The directory must exist. Returns false in two cases. If memory is short or the
// file cannot be opened, the file is unchanged. If the write fails or is incomplete, the file may be cut short.
bool saveDocument(const tinyxml2::XMLDocument& document, const std::wstring& path);

} // namespace OrvaUtils::Xml
