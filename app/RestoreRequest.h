#pragma once

#include <string>
#include <vector>

// A restore of a software repository that the application has recorded in "config.xml". The helper only keeps the
// request and starts the application if the request is in progress; the application performs the restore and defines
// the meaning of the fields below `inProgress`.
struct RestoreRequest {
    bool inProgress = false;
    std::wstring repositoryPath; // the ".osr" file
    bool force = false;
    std::vector<std::wstring> components; // names of components
    bool ignoreTarvexCpl = true;
    bool deleteOsrAfterRestore = false;
};
