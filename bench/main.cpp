// Runs the benchmarks. What stops one, for instance a missing folder for temporary files, ends all with one line.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <exception>
#include <iostream>

int main(int count, char** arguments) {
    try {
        benchmark::Initialize(&count, arguments);
        if (benchmark::ReportUnrecognizedArguments(count, arguments))
            return EXIT_FAILURE;
        benchmark::RunSpecifiedBenchmarks();
        benchmark::Shutdown();
    } catch (const std::exception& exception) {
        std::cerr << "benchmarks: " << exception.what() << '\n';
        return EXIT_FAILURE;
    }
}
