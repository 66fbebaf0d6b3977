#include "tests/support/TracedCall.h"

#include <cstdio>
#include <sstream>

std::vector<std::string> TracedCall::argumentList() const {
    std::vector<std::string> list;
    std::istringstream words(arguments);
    for (std::string word; std::getline(words >> std::ws, word, ',');)
        list.push_back(word);
    return list;
}

// "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms"
TracedCall tracedCall(const std::string& line) {
    TracedCall call;
    char function[64] = {};
    if (std::sscanf(line.c_str(), " %*u TarvexHelper.exe#%u t%u %63[A-Za-z_][%u]", &call.process, &call.thread,
                    function, &call.number) != 4)
        return {};
    call.function = function;
    const auto begin = line.find('(') + 1;
    const auto end = line.rfind(") = ");
    call.arguments = line.substr(begin, end - begin);
    std::istringstream(line.substr(end + 4)) >> call.result;
    call.failed = line.find(" error ", end) != std::string::npos || line.find(" fault", end) != std::string::npos;
    return call;
}
