// Measures how long the helper takes to read a disk's "Tarvex.xml" with 20 commands, none of which runs. For comparison
// the XML library alone reads the host's file and finds the same attributes.
#include "bench/MeasuredPanel.h"
#include "modules/usbconfig/Configuration.h"

#include <benchmark/benchmark.h>
#include <tinyxml2.h>

namespace {

constexpr const char* path = "\\MMCMemory\\Tarvex.xml";
constexpr std::size_t commands = 20;

void writeConfiguration(const MeasuredPanel& panel) {
    std::string document = "<Tarvex><Commands>\n";
    for (std::size_t command = 0; command < commands; ++command)
        document += "<Command Type=\"RunProcess\" FilePath=\"\\Hard Disk\\Setup" + std::to_string(command) +
                    ".exe\" Arguments=\"-quiet -all\" WaitCompletion=\"1\"/>\n";
    panel.writeFile(path, document + "</Commands></Tarvex>\n");
}

void readConfiguration(benchmark::State& state) {
    const MeasuredPanel panel;
    writeConfiguration(panel);
    for ([[maybe_unused]] auto iteration : state)
        if (Configuration(L"\\MMCMemory\\Tarvex.xml").commands.size() != commands)
            state.SkipWithError("not every command was read");
}

void readConfigurationWithTinyxml2(benchmark::State& state) {
    const MeasuredPanel panel;
    writeConfiguration(panel);
    const std::string file = panel.hostPath(path);
    for ([[maybe_unused]] auto iteration : state) {
        tinyxml2::XMLDocument document;
        document.LoadFile(file.c_str());
        const tinyxml2::XMLElement* command = document.RootElement()->FirstChildElement()->FirstChildElement();
        for (; command; command = command->NextSiblingElement())
            for (const char* name : {"Type", "FilePath", "Arguments", "WaitCompletion"})
                benchmark::DoNotOptimize(command->Attribute(name));
    }
}

} // namespace

BENCHMARK(readConfiguration)->Unit(benchmark::kMicrosecond);
BENCHMARK(readConfigurationWithTinyxml2)->Unit(benchmark::kMicrosecond);
