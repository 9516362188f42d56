// The base family's setters: one durable registry write each, to compare with the registry's
// own durable write (RegistrySetDwordDurably) and the LMDB put-and-commit floor in the same run.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"

namespace {

void BM_BaseFamily_intSet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    int value = 0;
    for (auto _ : state)
        ZETSettings::intSetBaseValue(L"BenchValue", ++value);
}
BENCHMARK(BM_BaseFamily_intSet)->UseRealTime();

void BM_BaseFamily_strSet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    int value = 0;
    for (auto _ : state)
        ZETSettings::strSetBaseValue(L"BenchText", L"text " + std::to_wstring(++value));
}
BENCHMARK(BM_BaseFamily_strSet)->UseRealTime();

}  // namespace
