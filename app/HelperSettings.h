#pragma once

#include "app/RestoreRequest.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tinyxml2 {
class XMLElement;
}

// The helper's settings: the document "config.xml" in the installation directory.
//
// Read when it is constructed, changed in memory, written as a whole by `save`, not at its end. Nothing reports a
// failure: without a file there are the defaults, an unreadable one counts as empty. For the main thread only, during
// start-up.
class HelperSettings {
public:
    // Reads the document. The program uses the one of `instance`.
    HelperSettings();
    HelperSettings(const HelperSettings&) = delete;
    HelperSettings& operator=(const HelperSettings&) = delete;

    // The settings of the process, read at the first call.
    static HelperSettings& instance();

    // Replaces the document. Of a restore request that is not in progress, or names no repository, only whether it is
    // in progress is written.
    void save() const;

    // The first restore request in progress, or null.
    const RestoreRequest* requestInProgress() const;

    // In the order of the document.
    std::vector<RestoreRequest> restoreRequests;
    // Directories with leftovers to be deleted at the next start.
    std::vector<std::wstring> cleanupDirectories;
    // Kept for others; the log's threshold is set independently of it. 2 without a document or a readable number, 0
    // for a document without the element "Parameters".
    std::int32_t logLevel = 0;

private:
    void read(const tinyxml2::XMLElement& root);
    void readSettings(const tinyxml2::XMLElement& settings);
    void readRestore(const tinyxml2::XMLElement& restore);

    std::wstring path;
};
