#pragma once

namespace checks {

// Notes, in "\Temp\diary.txt", what happens before and after the program itself. A static of its own file, made by the
// first who asks.
class Diary {
public:
    void note(const char* line);

private:
    friend Diary& diary();
    Diary();
    ~Diary();
};

Diary& diary();

} // namespace checks
