// A panel for sweeps: what is on it before the helper's first start, what happens to the helper then, and the state
// that the panel comes to when it is booted again and nothing goes wrong.
//
// The eMMC's counter answers a little late. By then the main thread rests, so that the statistics' thread writes its
// file at the same point of each run, although the two threads go on side by side.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <functional>

using Tree = std::map<std::string, std::string>;

enum class Story {
    fromDisk, // started from a disk, installed, ended
    inPlace, // started in place with much to clean up and a restore in progress, ended
    life, // started in place; an idle cycle, touches, a disk, settings reloaded, five minutes, the end; two log files
};

// Of an end state: without what became of the parts of a life.
Tree withoutDeeds(Tree state);

class SweptPanel : public ScenarioPanel {
public:
    explicit SweptPanel(Story storyToTell);

    // Tells the story, as far as a helper is there for it. False: it has ended before.
    bool live();
    // The story without its end, and the end alone. `commands`: with how many commands to end the helper does so; 0: it
    // gets one and goes on.
    bool liveOn();
    void end(unsigned commands = 1);

    // Tells it until the power is cut; false: it never was.
    bool liveUntilCut();
    // All on which the next boot depends: files and folders with their attribute, the registry as flash has it, the
    // eMMC's count. Not the logs: nobody reads them.
    Tree left();

    // After a reboot, or at once, the helper is started without faults and ended, and the power cut.
    // Files, registry as flash has it, and in parentheses what became of each part of a life that `live` has told.
    Tree endState(bool afterReboot = true);
    // The same after a power cut: what the registry lists is started, or, if it lists nothing, what a person finds.
    Tree stateAfterCut();

private:
    void startHelper();
    bool idleAndWake();
    bool plugAndUnplug();
    bool reload();
    Tree files() const;
    // What the eMMC's counter answered last since boot; 0 if it refused or was not asked.
    std::uint64_t countedWrites();
    Tree stateAfter(std::uint64_t counted, const std::function<void()>& start);

    Story story;
    Tree deeds;
};
