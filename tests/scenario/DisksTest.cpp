// Disks that are plugged, described by hand, and unplugged.
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// A folder of the host with a file, and with a link that leads out of it.
struct HostFolder : FreshFolder {
    HostFolder() {
        writeText(path / "disk/sub/file.txt", "content");
        writeText(path / "precious/file.txt", "content");
        fs::create_directory_symlink(path / "precious", path / "disk/link");
    }
};

} // namespace

TEST(Disks, ArePluggedAsCopiesOrInPlaceAndUnplugged) {
    ScenarioPanel panel;
    const HostFolder host;
    const fs::path folder = host.path / "disk";
    EXPECT_THROW(panel.panel().plug({{{panel.panel().directory(), "Hard Disk"}}}), std::runtime_error);
    panel.panel().plug({{{folder, "Hard Disk"}}});
    EXPECT_EQ(panel.read("\\Hard Disk\\sub\\file.txt"), "content");
    fs::remove(panel.panel().hostPath("\\Hard Disk\\sub\\file.txt"));
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was a copy
    panel.panel().plug({{{folder, "Hard Disk2"}}, 0, true});
    EXPECT_THROW(panel.panel().plug({{{folder, "hard disk2"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().plug({{{folder, "a\\b"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().plug({{{folder / "none", "Hard Disk3"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().disks().unplug("MMCMemory"), std::runtime_error);
    panel.put("\\Hard Disk2\\Tarvex\\TarvexHelper.exe", helperFile());
    fs::create_directory_symlink(host.path / "precious", folder / "Tarvex/link");
    EXPECT_EQ(panel.run("\\Hard Disk2\\Tarvex\\TarvexHelper.exe"), 0U); // which deletes its folder
    EXPECT_TRUE(fs::exists(host.path / "precious/file.txt")); // but nothing outside of the disk
    panel.reboot();
    EXPECT_EQ(panel.read("\\Hard Disk2\\sub\\file.txt"), "content"); // still plugged
    panel.panel().disks().unplug("HARD DISK2");
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was in place
    panel.panel().disks().unplug("Hard Disk");
    EXPECT_FALSE(panel.exists("\\Hard Disk"));
}

TEST(Disks, OfTwoPluggedAtOnceBothStay) {
    ScenarioPanel panel;
    const HostFolder host;
    std::vector<pid_t> children;
    for (int index = 0; index < 6; ++index) {
        children.push_back(fork());
        if (children.back() == 0) {
            panel::Panel(panel.panel().directory()).plug({{{host.path / "disk", ""}}});
            _exit(0);
        }
    }
    for (const pid_t child : children)
        waitpid(child, nullptr, 0);
    for (int index = 0; index < 6; ++index)
        panel.panel().disks().unplug("Hard Disk" + (index ? std::to_string(index + 1) : ""));
}
