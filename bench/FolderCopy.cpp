// Measures how long the helper's file system takes on the simulated panel to copy a folder of small files and to delete
// the copy. For comparison std::filesystem does the same on the host. The argument is the number of files. "per_file",
// the processor time per file, must not grow with it.
//
//     build/native/FolderCopy
#include "OrvaUtils/IO/IFileSystem.h"
#include "platform/panel/Driver.h"
#include "platform/panel/Panel.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

// A panel that is on and has a folder of files. This process is a driver of it.
class FullPanel {
public:
    explicit FullPanel(std::int64_t files) : simulated(panel::Panel::create(freshDirectory(), {})) {
        const fs::path folder = simulated.hostPath("\\MMCMemory\\From");
        fs::create_directories(folder);
        for (std::int64_t file = 0; file < files; ++file)
            std::ofstream(folder / ("File " + std::to_string(file) + ".txt")) << "small";
        simulated.boot({});
        attached = std::make_unique<panel::Driver>(simulated);
    }

    ~FullPanel() {
        attached.reset();
        simulated.off();
        fs::remove_all(simulated.directory());
    }

    FullPanel(const FullPanel&) = delete;
    FullPanel& operator=(const FullPanel&) = delete;

    fs::path hostPath(const std::string& path) const {
        return simulated.hostPath(path);
    }

private:
    static fs::path freshDirectory() {
        std::string name = (fs::temp_directory_path() / "panel-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a directory " + name);
        return name;
    }

    panel::Panel simulated;
    std::unique_ptr<panel::Driver> attached;
};

template<class Work>
void measure(benchmark::State& state, Work work) {
    const FullPanel panel(state.range(0));
    const fs::path copy = panel.hostPath("\\MMCMemory\\To");
    for ([[maybe_unused]] auto iteration : state) {
        work(panel, copy);
        if (fs::exists(copy)) {
            state.SkipWithError("the copy is still there");
            break;
        }
    }
    state.counters["per_file"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void copyAndDelete(benchmark::State& state) {
    measure(state, [&state](const FullPanel&, const fs::path& copy) {
        OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
        files.copyDirectory(L"\\MMCMemory\\To", L"\\MMCMemory\\From", true, L"*");
        const auto copied = std::distance(fs::directory_iterator(copy), fs::directory_iterator());
        if (copied != state.range(0))
            state.SkipWithError("not everything was copied");
        files.deleteDirectoryOrRename(L"\\MMCMemory\\To");
    });
}

void copyAndDeleteWithStdFilesystem(benchmark::State& state) {
    measure(state, [](const FullPanel& panel, const fs::path& copy) {
        fs::copy(panel.hostPath("\\MMCMemory\\From"), copy);
        fs::remove_all(copy);
    });
}

} // namespace

BENCHMARK(copyAndDelete)->Arg(500)->Arg(8000)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(copyAndDeleteWithStdFilesystem)
    ->Arg(500)
    ->Arg(8000)
    ->Iterations(3)

    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
