// What the loader makes of a panel executable that is damaged, or made for something else: one line that says why, and
// exit code 127. The file is the empty changedProgram with a few bytes changed.
#include "platform/panel/PortableExecutable.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

namespace {

namespace pe = panel::pe;

constexpr std::uint32_t refused = 127;
constexpr const char* changedProgram = "\\Temp\\Changed.exe";

class File { // offsets in it are those in the image, too
public:
    File() {
        std::ifstream stream(PANEL_EXECUTABLES "Empty.exe", std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(stream), {});
        start = get(pe::signaturePlace);
    }
    std::uint32_t get(std::uint32_t offset) const {
        std::uint32_t value = 0;
        bytes.copy(reinterpret_cast<char*>(&value), sizeof value, offset);
        return value;
    }
    template<class Number>
    void set(std::uint32_t offset, Number value) {
        std::memcpy(bytes.data() + offset, &value, sizeof value);
    }
    std::uint32_t header(std::uint32_t offset) const {
        return start + offset;
    }
    std::uint32_t section(unsigned index, std::uint32_t offset) const {
        return header(pe::sections) + index * static_cast<std::uint32_t>(sizeof(pe::Section)) + offset;
    }
    std::uint32_t block(unsigned index) const { // of the imports: lookup, 0, 0, library, slots
        return get(header(pe::importDirectory)) + index * 20;
    }
    std::uint32_t name(unsigned block, unsigned index) const { // of a function
        return get(get(this->block(block)) + index * 4) + 2;
    }

    std::string bytes;

private:
    std::uint32_t start = 0;
};

using Change = std::function<void(File&)>;

std::string output(ScenarioPanel& panel) { // and removes it
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(panel.panel().directory() / "run/output")) {
        std::ifstream stream(entry.path());
        text.append(std::istreambuf_iterator<char>(stream), {});
        std::filesystem::remove(entry);
    }
    return text;
}

Change header16(std::uint32_t offset, std::uint16_t value) {
    return [=](File& file) { file.set(file.header(offset), value); };
}

Change header32(std::uint32_t offset, std::uint32_t value) {
    return [=](File& file) { file.set(file.header(offset), value); };
}

Change section32(unsigned index, std::uint32_t offset, std::uint32_t value) {
    return [=](File& file) { file.set(file.section(index, offset), value); };
}

} // namespace

TEST(ChangedExecutable, IsRefusedInOneLineWhenItIsLoaded) {
    constexpr std::uint32_t far = 0x7FFFFFF0;
    const struct {
        Change change;
        const char* why;
    } cases[] = {
        {header16(pe::optionalSize, 0x60), "its optional header is not a PE32 header"},
        {header16(pe::characteristics, 0x210F), "it is a library, or was not completely linked"},
        {header32(pe::entryPoint, 0xFFFFFFFE), "its entry lies outside of its code"},
        {header32(pe::imageSize, 0x1000), "a section reaches beyond its image"},
        {header32(pe::imageBase, 0x20000000), "there is no room for its image at its base"}, // the loader's own
        {header32(pe::importDirectory, far), "its imports lie outside of its image"},
        {section32(2, 8, 0xFFFFFFFF), "a section reaches beyond its image"},
        {section32(1, 12, 0x2010), "a section does not begin with a page"},
        {section32(2, 36, 0x40000040), "its imports' addresses lie outside of its writable sections"},
        {[](File& file) { file.set(file.get(file.block(0)), 0x80000005); }, "it imports a function by its number"},
        {[](File& file) { file.set(file.get(file.block(0) + 12), 'X'); },
         "it imports from XOREDLL.dll, not from coredll.dll alone"},
        {[](File& file) { file.bytes.replace(file.block(2), 20, file.bytes, file.block(1), 20); },
         "it has more import blocks than its own and its run time's"},
        {[](File& file) { file.bytes.replace(file.name(0, 0), 300, std::string(300, 'x')); },
         "a name in its imports has no end"},
    };
    ScenarioPanel panel;
    for (const auto& [change, why] : cases) {
        File file;
        change(file);
        panel.write(changedProgram, file.bytes);
        EXPECT_EQ(panel.run(changedProgram), refused) << why;
        panel.driver().waitForLingering();
        EXPECT_EQ(output(panel), "\\Temp\\Changed.exe cannot be run: " + std::string(why) + '\n');
    }
}

TEST(ChangedExecutable, IsToldEveryFunctionThatThePanelLacks) {
    ScenarioPanel panel;
    File file;
    file.set(file.name(0, 0), '?');
    file.set(file.name(0, 2), '\n');
    const std::string first = file.bytes.c_str() + file.name(0, 0);
    const std::string third = file.bytes.c_str() + file.name(0, 2);
    panel.write(changedProgram, file.bytes);
    EXPECT_EQ(panel.run(changedProgram), refused);
    panel.driver().waitForLingering();
    std::string line = "\\Temp\\Changed.exe cannot be run: the panel has no ";
    line += first;
    line += ", \\x0A";
    line += third.substr(1);
    EXPECT_EQ(output(panel), line + '\n');
}

TEST(ChangedExecutable, IsNoProgramIfItIsForAnotherMachineOrCutShort) {
    ScenarioPanel panel;
    const std::vector<Change> changes = {
        [](File& file) { file.bytes.resize(2); },
        [](File& file) { file.bytes.resize(file.bytes.size() - 1); },
        [](File& file) { file.set(pe::signaturePlace, 0xFFFFFFF0); },
        [](File& file) { file.set(file.header(0), 'Q'); },
        header16(pe::machine, 0x014C),
        section32(0, 20, 0xFFFFFFFF),
    };
    for (const Change& change : changes) {
        File file;
        change(file);
        panel.write(changedProgram, file.bytes);
        EXPECT_THROW(panel.driver().start(changedProgram), std::runtime_error) << &change - changes.data();
    }
    panel.write(changedProgram, File().bytes);
    EXPECT_NO_THROW(panel.driver().start(changedProgram)); // unchanged it is one
}
