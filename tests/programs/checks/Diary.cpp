#include "tests/programs/checks/Statics.h"

#include <crt.h>

namespace checks {

Diary::Diary() {
    note("diary made");
}

Diary::~Diary() {
    note("diary gone");
}

void Diary::note(const char* line) {
    std::FILE* const file = _wfopen(L"\\Temp\\diary.txt", L"a");
    if (file == nullptr)
        return;
    std::fputs(line, file);
    std::fputc('\n', file);
    std::fclose(file);
}

Diary& diary() {
    static Diary instance;
    return instance;
}

} // namespace checks
