// A getter of each value family on a present value, beside the base family's getters as the
// reference: every one opens the base key and, but for the base family, one subkey.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"

namespace {

const std::wstring kName = L"BenchValue";

void BM_BaseFamily_intGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetBaseValue(kName, 42);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetBaseValue(kName, 0, false));
}
BENCHMARK(BM_BaseFamily_intGet);

void BM_BaseFamily_strGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::strSetBaseValue(kName, L"a stored text");
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::strGetBaseValue(kName, L"", false));
}
BENCHMARK(BM_BaseFamily_strGet);

void BM_Configurator_intGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetConfiguratorValue(kName, 42);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetConfiguratorValue(kName));
}
BENCHMARK(BM_Configurator_intGet);

void BM_Netlib_strGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::strSetNetlibValue(kName, L"a stored text");
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::strGetNetlibValue(kName, L""));
}
BENCHMARK(BM_Netlib_strGet);

void BM_GuiHelper_strGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::strSetGuiHelperValue(kName, L"a stored text");
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::strGetGuiHelperValue(kName, L""));
}
BENCHMARK(BM_GuiHelper_strGet);

void BM_RasEap_intGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetRasEapValue(kName, 42);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetRasEapValue(kName, 0));
}
BENCHMARK(BM_RasEap_intGet);

void BM_ZetGuard_intGet(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetZetGuardValue(kName, 42);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetZetGuardValue(kName, 0, true));
}
BENCHMARK(BM_ZetGuard_intGet);

}  // namespace
