#pragma once

#include <string>
#include <vector>

// A restore of a software repository that the application has recorded in "config.xml". If a request is in progress,
// the helper starts the application, which performs the restore. The helper only stores the fields below `inProgress`;
// the application defines their meaning.
struct RestoreRequest {
    bool inProgress = false;
    std::wstring repositoryPath; // the ".osr" file
    bool force = false;
    std::vector<std::wstring> components; // names of components
    bool ignoreTarvexCpl = true;
    bool deleteOsrAfterRestore = false;
};
