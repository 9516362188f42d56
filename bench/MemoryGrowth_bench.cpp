// A long run of mixed operations, ninety-nine reads to one write, that reports how much the
// process's resident memory and the store's files grew between the end of a warm-up (a tenth
// of the run, which lets the allocator and the store reach their working size) and the end.
// The data stays the same size all along, so any growth is a leak. The number of operations is
// ZET_BENCH_MEMORY_OPS, a million unless set.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "ResidentMemory.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"

namespace {

long operationCount()
{
    const char* configured = std::getenv("ZET_BENCH_MEMORY_OPS");
    return configured ? std::atol(configured) : 1000000;
}

double storeBytes(const std::string& directory)
{
    double bytes = 0;
    std::error_code ignored;
    if (!directory.empty())
        for (const auto& file : std::filesystem::directory_iterator(directory, ignored))
            if (file.is_regular_file(ignored))
                bytes += static_cast<double>(file.file_size(ignored));
    return bytes;
}

boost::shared_ptr<ZETNetworkSettings> profile(long round)
{
    boost::shared_ptr<ZETNetworkSettings> settings(new ZETNetworkSettings);
    settings->profileText = L"profile " + std::to_wstring(round % 7);
    const std::string secret = "secret " + std::to_string(round % 7);
    settings->protectedBlob = ZETBuf(secret.data(), secret.size());
    return settings;
}

boost::shared_ptr<ZETUserSettings> user(long round)
{
    boost::shared_ptr<ZETUserSettings> settings(new ZETUserSettings);
    settings->userText = L"user text " + std::to_wstring(round % 7);
    return settings;
}

void write(long round)
{
    switch (round % 5) {
    case 0: ZETSettings::intSetBaseValue(L"BenchNumber", static_cast<int>(round)); break;
    case 1: ZETSettings::setNetworkSettings(L"Office WLAN", profile(round)); break;
    case 2: ZETSettings::setUserSettings(L"domain\\user", user(round)); break;
    case 3: ZETSettings::updateAlertNotificationState(static_cast<int>(round % 3), round % 2 == 0); break;
    default: ZETSettings::setLoginData(L"operator", L"password " + std::to_wstring(round % 7), true, true, false);
    }
}

void read(long operation)
{
    bool a = false, b = false, c = false;
    std::wstring name, password;
    switch (operation % 6) {
    case 0: benchmark::DoNotOptimize(ZETSettings::intGetBaseValue(L"BenchNumber", 0, false)); break;
    case 1: benchmark::DoNotOptimize(ZETSettings::getNetworkSettings(L"Office WLAN")); break;
    case 2: benchmark::DoNotOptimize(ZETSettings::getUserSettings(L"domain\\user")); break;
    case 3: benchmark::DoNotOptimize(ZETSettings::isAlertNotificationEnabled(1)); break;
    case 4: ZETSettings::getLoginData(name, password, a, b, c); break;
    default: benchmark::DoNotOptimize(ZETSettings::getNetworkSettingsKeys());
    }
}

void operate(long operation)
{
    if (operation % 100 == 99)
        write(operation / 100);
    else
        read(operation);
}

void MemoryGrowth_MixedOperations(benchmark::State& state)
{
    zettest::TestRegistry registry;
    const long total = operationCount();
    for (long round = 0; round < 5; ++round)
        write(round);
    double residentWarm = 0, storeWarm = 0;
    for (auto _ : state) {
        for (long operation = 0; operation < total; ++operation) {
            if (operation == total / 10) {
                residentWarm = opsuite::residentBytes();
                storeWarm = storeBytes(registry.storeDirectory());
            }
            operate(operation);
        }
    }
    state.counters["operations"] = static_cast<double>(total);
    state.counters["resident_growth_bytes"] = opsuite::residentBytes() - residentWarm;
    state.counters["resident_bytes"] = opsuite::residentBytes();
    if (!registry.storeDirectory().empty()) {
        state.counters["store_growth_bytes"] = storeBytes(registry.storeDirectory()) - storeWarm;
        state.counters["store_bytes"] = storeBytes(registry.storeDirectory());
    }
}
BENCHMARK(MemoryGrowth_MixedOperations)->Iterations(1)->Repetitions(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
