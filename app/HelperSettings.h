#pragma once

#include "app/RestoreRequest.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tinyxml2 {
class XMLElement;
}

// The settings of the helper: the document "config.xml" in the installation directory.
//
// The constructor reads the document, the start-up steps change the fields in memory, and `save` writes the whole
// document. The destructor does not save. Failures are not reported: a missing document gives the defaults, a document
// that cannot be read counts as empty, and a failed `save` leaves the file as saveDocument describes. Only the main
// thread uses the object, during start-up. If a "Directory" element lacks the attribute "Name", the constructor
// deliberately never returns.
class HelperSettings {
public:
    // Reads the document. Program code uses `instance` and does not create an object of its own.
    HelperSettings();
    HelperSettings(const HelperSettings&) = delete;
    HelperSettings& operator=(const HelperSettings&) = delete;

    // Returns the settings of the process. The first call reads the document.
    static HelperSettings& instance();

    // Replaces the document by the fields of this object. Requests of the old document that the constructor did not
    // read are lost. `restoreRequests` can hold a request that code has added or changed. If such a request is not in
    // progress, or its repository path is empty, its element gets only the attribute "InProgress".
    void save() const;

    // Returns the first restore request that is in progress, or null. The pointer is valid until the list changes.
    const RestoreRequest* requestInProgress() const;

    // The requests in the order of the document. Requests that are not in progress, or lack a repository path or
    // "Components", are not read.
    std::vector<RestoreRequest> restoreRequests;
    // The cleanup directories, in the order of the document: the next start deletes the leftovers in them. An empty
    // path makes every later start fail.
    std::vector<std::wstring> cleanupDirectories;
    // The attribute "LogLevel". The helper reads it and writes it back, and does not use it: the threshold of the log
    // is set independently. It is 2 if there is no document or the attribute is not a number, and 0 if the document
    // cannot be read or lacks the element "Parameters".
    std::int32_t logLevel = 0;

private:
    void read(const tinyxml2::XMLElement& root);
    void readSettings(const tinyxml2::XMLElement& settings);
    void readRestore(const tinyxml2::XMLElement& restore);

    std::wstring path;
};
