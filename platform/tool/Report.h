// Reports: archives (".tar.gz") with a whole panel and its state, for a bug report. The program tar packs and unpacks
// them.
//
//     panel/          the panel's directory; a disk that was plugged in place is a folder in it
//     panel/report/   version.txt, status.txt, status.json, programs.txt (the running and the ended programs), log.txt
//
// All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Panel.h"

#include <filesystem>

namespace tool {

// Writes a report. A panel that is on stands still while its files are copied, so that they are from one moment. The
// report leaves out links, and everything else that is neither file nor folder. Complains about files that cannot be
// read, and leaves them out too.
void writeReport(const panel::Panel& panel, const std::filesystem::path& file);

// Makes a panel of a report, or of another archive with one folder that is a panel. The panel is off. The directory
// must be empty or not exist. A failure leaves nothing behind. Archives with names outside of their folder, with links
// or devices, or with files that no panel has in their place are refused.
panel::Panel panelFromReport(const std::filesystem::path& file, const std::filesystem::path& directory);

} // namespace tool
