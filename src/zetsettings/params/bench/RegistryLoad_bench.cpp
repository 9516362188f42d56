// LoadFromRegistry of a full table (XP SP2, 62 parameters) in each mode, beside the reference
// of the same 62 writes made directly through the configurator family: mode 0 is that work
// plus the reading of the mode and the two captions.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/platform/Win32.h"

namespace
{

const wchar_t kMode[] = L"ZET_CONFIGURATOR_REGISTRY_MODE";

void writeText(const wchar_t* path, const wchar_t* name, const std::wstring& text)
{
    HKEY key = 0;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0) != ERROR_SUCCESS)
        return;
    RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
}

// A machine running XP SP2, with both caption sources present, and a full table.
ZETConfigParam fullTable()
{
    const wchar_t* version = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    writeText(version, L"CurrentVersion", L"5.1");
    writeText(version, L"CSDVersion", L"Service Pack 2");
    writeText(L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}", L"", L"Network Connections");
    writeText(
        L"System\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
        L"{1A2B3C4D-0000-1111-2222-333344445555}\\Connection",
        L"Name", L"WLAN 7");
    ZETConfigParam param;
    param.InitializeDefaults();
    return param;
}

void loadInMode(benchmark::State& state, int mode)
{
    zettest::TestRegistry registry;
    const ZETConfigParam table = fullTable();
    ZETSettings::intSetConfiguratorValue(kMode, mode);
    ZETConfigParam(table).LoadFromRegistry(L"{1A2B3C4D-0000-1111-2222-333344445555}");  // mode 1 finds values
    for (auto _ : state) {
        ZETConfigParam param(table);
        param.LoadFromRegistry(L"\\Device\\{1A2B3C4D-0000-1111-2222-333344445555}");
        benchmark::DoNotOptimize(param.getAdapterCaption().size());
    }
}

void BM_LoadFromRegistry_TableWins(benchmark::State& state)
{
    loadInMode(state, 0);
}
BENCHMARK(BM_LoadFromRegistry_TableWins)->Unit(benchmark::kMillisecond);

void BM_LoadFromRegistry_RegistryWins(benchmark::State& state)
{
    loadInMode(state, 1);
}
BENCHMARK(BM_LoadFromRegistry_RegistryWins)->Unit(benchmark::kMillisecond);

void BM_LoadFromRegistry_NoMirror(benchmark::State& state)
{
    loadInMode(state, 2);
}
BENCHMARK(BM_LoadFromRegistry_NoMirror)->Unit(benchmark::kMillisecond);

// The reference: as many family writes as mode 0 makes, 4 texts and 58 numbers, called directly.
void BM_Reference_62ConfiguratorWrites(benchmark::State& state)
{
    zettest::TestRegistry registry;
    std::wstring names[58];
    for (int i = 0; i < 58; ++i)
        names[i] = L"ZET_BENCH_NUMBER_" + std::to_wstring(i);
    const std::wstring texts[4] = {L"ZET_BENCH_TEXT_0", L"ZET_BENCH_TEXT_1", L"ZET_BENCH_TEXT_2",
                                   L"ZET_BENCH_TEXT_3"};
    for (auto _ : state) {
        for (const std::wstring& name : texts)
            ZETSettings::strSetConfiguratorValue(name, L"Wireless Network Connection");
        for (int i = 0; i < 58; ++i)
            ZETSettings::intSetConfiguratorValue(names[i], 15000 + i);
    }
}
BENCHMARK(BM_Reference_62ConfiguratorWrites)->Unit(benchmark::kMillisecond);

}  // namespace
