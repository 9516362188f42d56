// The read of the machine's set of fallback keys with 1, 100 and 10,000 keys stored: one
// decryption of the whole set, then a copy of every entry into the caller's map.
#include <benchmark/benchmark.h>

#include <string>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/records/bench/RecordBenchSupport.h"

using namespace recordbench;

namespace {

void fillKeys(int keys)
{
    boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > set(
        new std::map<std::wstring, ZETFallbackKeySettings>);
    for (int i = 0; i < keys; ++i) {
        ZETFallbackKeySettings entry;
        entry.keyText1 = L"key text " + std::to_wstring(i);
        entry.keyBytes = std::string(13, 'k');
        set->emplace(L"Fallback" + std::to_wstring(i), entry);
    }
    ZETSettings::setFallbackKeySettings(set);
}

void getKeys(benchmark::State& state, int keys)
{
    ensureFilled("fallback keys", keys, fillKeys);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getFallbackKeySettings());
    reportPerEntry(state, keys);
}

const bool registered = registerBySize({{"BM_FallbackKeys_get", getKeys, false}});

}  // namespace
