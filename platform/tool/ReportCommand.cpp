#include "platform/tool/Commands.h"
#include "platform/tool/Report.h"

#include <memory>

namespace tool {

void addReportCommand(CLI::App& app, Tool& tool) {
    auto* command =
        app.add_subcommand("report", "Write the whole panel with version, status, programs, log and trace to a file, "
                                     "for a bug report; the panel may be on");
    auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "File on this machine, such as report.tar.gz; it is replaced")->required();
    command->footer("\nA panel that is on stands still while its files are copied. panel create DIR --from FILE makes "
                    "a panel of the file; that panel is off.\n");
    command->callback([file, &tool] { writeReport(tool.panel(), *file); });
}

} // namespace tool
