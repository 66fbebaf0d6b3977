#pragma once

#include <string>
#include <vector>

// A software repository that the application is restoring, as it noted it in the settings document.
struct RestoreRequest {
    bool inProgress = false;
    std::wstring repositoryPath; // of the ".osr" file
    bool force = false;
    std::vector<std::wstring> components; // names
    bool ignoreTarvexCpl = true;
    bool deleteOsrAfterRestore = false;
};
