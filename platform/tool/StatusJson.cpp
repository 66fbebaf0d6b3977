#include "platform/tool/StatusJson.h"

#include "platform/tool/Units.h"

#include <string>
#include <vector>

namespace tool {

namespace {

using panel::ClockMode;
using panel::Json;

void addRunning(Json& answer, const panel::PanelStatus& status, std::size_t faults) {
    answer["date"] = formatDate(status.date);
    answer["clock"] = {{"mode", status.mode == ClockMode::stepped ? "stepped" : "flowing"},
                       {"factor", status.factor},
                       {"time", status.time},
                       {"ticks", status.ticks}};
    answer["userActive"] = status.userActive ? Json(*status.userActive) : Json(nullptr);
    answer["backLight"] = status.backLight;
    answer["screen"]["cover"] = status.screen.cover.empty() ? Json(nullptr) : Json(status.screen.cover);
    answer["screen"]["process"] = status.screen.process;
    answer["screen"]["background"] = status.screen.background;
    answer["cursor"] = {{"count", status.screen.cursorCount}, {"shown", status.screen.cursorCount >= 0}};
    answer["hook"] = status.hook.empty() ? Json(nullptr) : Json(status.hook);
    answer["signals"] = Json::object();
    for (const auto& signal : status.signals)
        answer["signals"][signal.event] = signal.count;
    answer["flashWritable"] = status.flashWritable;
    answer["trace"] = status.tracing;
    answer["faults"] = faults;
    for (const auto& process : status.processes)
        if (!process.driver)
            answer["processes"].push_back(process.name);
    for (const auto& ended : status.ended)
        answer["ended"].push_back({{"name", ended.name}, {"exitCode", ended.exitCode}, {"time", ended.time}});
    for (const auto& window : status.windows)
        answer["windows"].push_back(
            {{"class", window.className}, {"process", window.process}, {"visible", window.visible}});
}

Json toJson(const panel::Disk& disk) {
    Json json{{"device", disk.device},
              {"readyAfter", disk.readyAfter == panel::never ? Json(nullptr) : Json(disk.readyAfter)},
              {"partitions", Json::array()}};
    for (const panel::Partition& partition : disk.partitions)
        json["partitions"].push_back({{"volume", partition.volume}, {"attributes", partition.attributes}});
    return json;
}

} // namespace

Json statusJson(const panel::Panel& panel, panel::Driver* driver) {
    const panel::PanelOptions options = panel.options();
    Json answer{{"directory", panel.directory().string()},
                {"on", driver != nullptr},
                {"whyOff", driver ? "" : panel.whyOff()},
                {"screen", {{"width", options.screenWidth}, {"height", options.screenHeight}}},
                {"date", formatDate(panel.date())},
                {"storage", panel::storageNames[static_cast<std::size_t>(options.storage)]}};
    for (const auto& volume : panel.disks().volumes())
        answer["volumes"].push_back({{"name", volume.name}, {"device", volume.device}, {"inPlace", volume.inPlace}});
    answer["disks"] = Json::array();
    for (const auto& disk : panel.disks().list())
        answer["disks"].push_back(toJson(disk));
    const std::vector<panel::Request> beeps = panel.devices().requests("BZR1");
    answer["buzzer"] = {{"requests", beeps.size()}, {"last", nullptr}, {"time", nullptr}, {"error", nullptr}};
    if (!beeps.empty())
        answer["buzzer"].update(
            {{"last", beeps.back().words}, {"time", beeps.back().time}, {"error", beeps.back().error}});
    for (const char* list : {"processes", "ended", "windows"})
        answer[list] = Json::array();
    if (driver)
        addRunning(answer, driver->status(), driver->faults().size());
    return answer;
}

} // namespace tool
