// The read of the machine's login, beside the read of one plain number on the base key as the
// reference: the difference is the decryption and the record.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"

namespace {

void BM_Reference_intGetBaseValue(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetBaseValue(L"BenchValue", 42);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetBaseValue(L"BenchValue", 0, false));
}
BENCHMARK(BM_Reference_intGetBaseValue);

void BM_LoginData_get(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::setLoginData(L"operator@example", L"a password of some length", true, true, true);
    std::wstring user, password;
    bool enabled = false, keep = false, dependent = false;
    for (auto _ : state) {
        ZETSettings::getLoginData(user, password, enabled, keep, dependent);
        benchmark::DoNotOptimize(password.data());
    }
}
BENCHMARK(BM_LoginData_get);

}  // namespace
