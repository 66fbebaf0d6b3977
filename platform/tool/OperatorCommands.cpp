#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Units.h"

#include "platform/panel/Operator.h"

#include <cstdio>
#include <memory>
#include <tuple>

namespace tool {

namespace {

using panel::Landing;
using panel::Touch;

struct TouchOptions {
    Touch touch;
    bool placed = false;
    std::pair<std::int32_t, std::int32_t> place;
    bool press = false;
    bool release = false;
    bool move = false;
    std::uint32_t count = 1;
    std::string limit = "20s";
    bool json = false;
};

constexpr const char* kindOf(Landing::Kind kind) {
    return kind == Landing::Kind::landed ? "landed" : kind == Landing::Kind::swallowed ? "swallowed" : "unanswered";
}

void print(const Landing& landing, bool json) {
    if (json)
        printJson({{"touch", kindOf(landing.kind)}, {"window", landing.window}, {"process", landing.process}});
    else if (landing.kind == Landing::Kind::swallowed)
        std::puts("The mouse hook swallowed the touch");
    else if (landing.window.empty())
        std::puts("The touch did not land on a window");
    else
        std::printf("The touch landed on the window %s of %s\n", landing.window.c_str(), landing.process.c_str());
}

void touch(Tool& tool, TouchOptions options) {
    options.touch.kind = options.press     ? Touch::Kind::press
                         : options.release ? Touch::Kind::release
                         : options.move    ? Touch::Kind::move
                                           : Touch::Kind::tap;
    options.touch.limit = parseLimit(options.limit);
    const panel::Panel panel = tool.panel();
    if (options.placed) {
        const auto [x, y] = options.place;
        const panel::PanelOptions screen = panel.options();
        if (static_cast<std::uint32_t>(x) >= screen.screenWidth || static_cast<std::uint32_t>(y) >= screen.screenHeight)
            throw Misuse("the screen has no place " + std::to_string(x) + ' ' + std::to_string(y) + " (it has " +
                         std::to_string(screen.screenWidth) + " x " + std::to_string(screen.screenHeight) + ')');
        std::tie(options.touch.x, options.touch.y) = options.place;
    }
    panel::Driver driver(panel);
    for (std::uint32_t index = 0; index < options.count; ++index) {
        const Landing landing = panel::touch(options.touch);
        driver.settle();
        if (landing.kind == Landing::Kind::unanswered) {
            complain("the mouse hook did not return within " + options.limit + " (--limit allows more)");
            tool.exitCode = limitPassed;
            return;
        }
        if (index + 1 == options.count)
            print(landing, options.json);
    }
}

void addTouch(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("touch", "Touch the screen, and print the window that got the touch");
    auto options = std::make_shared<TouchOptions>();
    auto* place = command->add_option("--at", options->place, "Place in pixels; default: the middle of the screen")
                      ->type_name("X Y");
    command->add_flag("--right", options->touch.right, "Use the right button");
    auto* press = command->add_flag("--press", options->press, "Only press");
    auto* release = command->add_flag("--release", options->release, "Only release");
    command->add_flag("--move", options->move, "Only move")->excludes(press)->excludes(release);
    press->excludes(release);
    command->add_option("--count", options->count, "Number of touches")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1U, 0xFFFFFFFFU));
    command->add_option("--limit", options->limit, "Time-out of the mouse hook; exit code 124 if it passes")
        ->type_name("DURATION")
        ->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, place, &tool] {
        options->placed = place->count() > 0;
        touch(tool, *options);
    });
}

void addActivity(CLI::App& app, Tool& tool, const char* name, const char* description, bool active) {
    app.add_subcommand(name, description)->callback([active, &tool] {
        const panel::Driver driver(tool.panel());
        panel::setUserActive(active);
    });
}

} // namespace

void addOperatorCommands(CLI::App& app, Tool& tool) {
    addTouch(app, tool);
    addActivity(app, tool, "idle", "Make the user inactive, as if nobody used the panel", false);
    addActivity(app, tool, "active", "Make the user active, as if somebody used the panel", true);
}

} // namespace tool
