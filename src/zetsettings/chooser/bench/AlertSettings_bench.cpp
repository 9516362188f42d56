// The question for a stored alert with 10 and 1,000 alerts in the table: one read of the
// table under the named mutex, parsed whole, and no write. Beside it, as references in the
// same run, the two parts that the question can't do without: taking and releasing the named
// mutex, and one read of a value of the same key.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/chooser/bench/StoreCommits.h"
#include "zetsettings/components/ZETMutexGrabber.h"

namespace {

const wchar_t kSettings[] = L"Software\\Orvane\\QXL\\Settings";

// Planted in one write: a thousand updates would each be a durable write of their own.
void plantTable(int alerts)
{
    ZETAlertSettings settings;
    for (int i = 0; i < alerts; ++i)
        settings.states[static_cast<unsigned>(i)] = static_cast<unsigned>(i % 2);
    std::string bytes(static_cast<size_t>(settings.getSerLength()), '\0');
    settings.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    JetByteTools::CRegistryKey(HKEY_LOCAL_MACHINE)
        .CreateOrOpenKeyEx(kSettings, 0, L"", 0, KEY_ALL_ACCESS)
        .SetValue(L"ZET_ALERT_SETTINGS", reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
}

void BM_Alert_isEnabled(benchmark::State& state)
{
    zettest::TestRegistry registry;
    const int alerts = static_cast<int>(state.range(0));
    plantTable(alerts);
    const int asked = alerts / 2 + 1;
    const double committed = chooserbench::committedTransactions();
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::isAlertNotificationEnabled(asked));
    chooserbench::reportCommits(state, "commits_per_question", committed);
}
BENCHMARK(BM_Alert_isEnabled)->Arg(10)->Arg(1000)->UseRealTime();

void BM_Reference_NamedMutexHold(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETMutex& mutex = ZETSettingsTestAccess::preferredNetMutex();
    for (auto _ : state) {
        ZETMutexGrabber grabber(mutex, true);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Reference_NamedMutexHold)->UseRealTime();

void BM_Reference_SettingsRead(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETSettings::intSetZetGuardValue(L"ZET_BENCH_NUMBER", 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::intGetZetGuardValue(L"ZET_BENCH_NUMBER", 0, false));
}
BENCHMARK(BM_Reference_SettingsRead)->UseRealTime();

}  // namespace
