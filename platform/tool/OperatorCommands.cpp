#include "platform/tool/Commands.h"

#include "platform/panel/Operator.h"

namespace tool {

void addOperatorCommands(CLI::App& app, Tool& tool) {
    app.add_subcommand("idle", "Nobody uses the panel: the power manager reports the user as inactive")
        ->callback([&tool] {
            const panel::Driver driver(tool.panel());
            panel::setUserActive(false);
        });
    app.add_subcommand("active", "Somebody uses the panel: the power manager reports the user as active")
        ->callback([&tool] {
            const panel::Driver driver(tool.panel());
            panel::setUserActive(true);
        });
}

} // namespace tool
