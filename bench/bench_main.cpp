// Benchmarks report medians: every benchmark is repeated and only the aggregates are shown,
// unless the command line says otherwise. Started as a helper (--zet-child=NAME), the program
// runs that helper instead.
#include <benchmark/benchmark.h>

#include "support/ChildScenario.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    if (zettest::isChildInvocation(argc, argv))
        return zettest::runChildScenario(argc, argv);
    std::vector<char*> args(argv, argv + argc);
    std::string repetitions = "--benchmark_repetitions=5";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    args.insert(args.begin() + 1, &aggregates[0]);
    args.insert(args.begin() + 1, &repetitions[0]);
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data()))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
