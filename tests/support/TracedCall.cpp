#include "tests/support/TracedCall.h"

#include <fstream>
#include <sstream>

namespace {

// "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms"
TracedCall tracedCall(const std::string& line) {
    TracedCall call;
    std::istringstream words(line);
    words >> call.time >> std::ws;
    std::getline(words, call.program, '#');
    words >> call.process;
    words.ignore(2); // " t"
    words >> call.thread >> std::ws;
    std::getline(words, call.function, '[');
    words >> call.number;
    words.ignore(); // "]"
    std::getline(words, call.text);
    const auto end = call.text.rfind(") = ");
    call.arguments = call.text.substr(1, end - 1);
    const std::string outcome = call.text.substr(end + 4);
    call.result = outcome.substr(0, outcome.find(' '));
    call.failed = outcome.find(" error ") != std::string::npos || outcome.find(" fault") != std::string::npos;
    call.text.insert(0, call.function);
    return call;
}

} // namespace

std::vector<std::string> TracedCall::argumentList() const {
    std::vector<std::string> list;
    std::istringstream words(arguments);
    for (std::string word; std::getline(words >> std::ws, word, ',');)
        list.push_back(word);
    if (list.empty())
        list.emplace_back();
    return list;
}

std::string TracedCall::firstText() const {
    const auto begin = arguments.find('"') + 1;
    return begin == 0 ? "" : arguments.substr(begin, arguments.find('"', begin) - begin);
}

std::vector<TracedCall> tracedCalls(const std::filesystem::path& panelDirectory, std::uintmax_t begin) {
    std::ifstream file(panelDirectory / "run/trace");
    file.seekg(static_cast<std::streamoff>(begin));
    std::vector<TracedCall> calls;
    for (std::string line; std::getline(file, line);)
        calls.push_back(tracedCall(line));
    return calls;
}
