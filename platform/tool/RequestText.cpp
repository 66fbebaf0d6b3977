#include "platform/tool/RequestText.h"

namespace tool {

panel::Json requestJson(const panel::Request& request) {
    return {{"device", request.device}, {"time", request.time},           {"process", request.process},
            {"thread", request.thread}, {"operation", request.operation}, {"words", request.words},
            {"error", request.error}};
}

std::string requestText(const panel::Request& request) {
    std::string text = "at " + std::to_string(request.time) + " ms, " + request.process + " thread " +
                       std::to_string(request.thread) + ": " + request.operation;
    for (const std::uint32_t word : request.words)
        text += ' ' + std::to_string(word);
    return text + " = " + (request.error ? "error " + std::to_string(request.error) : "done");
}

} // namespace tool
