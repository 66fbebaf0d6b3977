#include "platform/view/Lines.h"

namespace view {

Lines::Lines(const panel::Panel& panel)
    : sources{{"trace", panel.directory() / "run/trace"},
              {"requests", panel.directory() / "devices/requests"},
              {"touches", panel.directory() / "devices/touches"}},
      log(panel) {}

std::vector<Lines::Batch> Lines::read() {
    constexpr std::uintmax_t most = 1 << 20; // bytes
    std::vector<Batch> batches;
    const auto add = [&](Batch batch) {
        if (batch.gone || !batch.lines.empty())
            batches.push_back(std::move(batch));
    };
    for (auto& [name, file, tail] : sources) {
        std::vector<std::string> lines = tail.newLines(file, most);
        add({name, tail.startedAgain(), std::move(lines)});
    }
    const bool deleted = !std::filesystem::exists(sources[1].file.parent_path()); // the helper's log survives a boot
    add({"log", deleted, log.newLines()});
    return batches;
}

} // namespace view
