// Measures how long the helper's file system takes on the simulated panel to copy a folder of small files and to delete
// the copy. For comparison std::filesystem does the same on the host. The argument is the number of files. "per_file",
// the processor time per file, must not grow with it.
#include "OrvaUtils/IO/IFileSystem.h"
#include "bench/MeasuredPanel.h"

#include <benchmark/benchmark.h>

namespace {

namespace fs = std::filesystem;

template<class Work>
void measureCopy(benchmark::State& state, Work work) {
    const MeasuredPanel panel;
    for (std::int64_t file = 0; file < state.range(0); ++file)
        panel.writeFile("\\MMCMemory\\From\\File " + std::to_string(file) + ".txt", "small");
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
    measureCopy(state, [&state](const MeasuredPanel&, const fs::path& copy) {
        OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
        files.copyDirectory(L"\\MMCMemory\\To", L"\\MMCMemory\\From", true, L"*");
        const auto copied = std::distance(fs::directory_iterator(copy), fs::directory_iterator());
        if (copied != state.range(0))
            state.SkipWithError("not everything was copied");
        files.deleteDirectoryOrRename(L"\\MMCMemory\\To");
    });
}

void copyAndDeleteWithStdFilesystem(benchmark::State& state) {
    measureCopy(state, [](const MeasuredPanel& panel, const fs::path& copy) {
        fs::copy(panel.hostPath("\\MMCMemory\\From"), copy);
        fs::remove_all(copy);
    });
}

} // namespace

BENCHMARK(copyAndDelete)->Arg(500)->Arg(8000)->Unit(benchmark::kMillisecond);
BENCHMARK(copyAndDeleteWithStdFilesystem)->Arg(500)->Arg(8000)->Unit(benchmark::kMillisecond);
