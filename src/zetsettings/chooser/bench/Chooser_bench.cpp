// One step of the chooser's walk on lists of 10 and 255 entries, alone and with three more
// processes stepping the same list at once, beside the reference: one durable registry write
// of a binary value as long as the list's stored form. A step is one read and one write of
// that value under the named mutex; the ratio step / reference is read off the medians of
// the same run, and the store's own count of commits gives the durable writes per step.
#include <benchmark/benchmark.h>

#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/chooser/bench/ConcurrentSteppers.h"
#include "zetsettings/chooser/bench/StoreCommits.h"

namespace {

const wchar_t kSettings[] = L"Software\\Orvane\\QXL\\Settings";

boost::shared_ptr<ZETPreferredNetworks> listOf(int entries)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    for (int i = 0; i < entries; ++i) {
        ZETPreferredNetEntry entry;
        entry.netName = L"Preferred network " + std::to_wstring(i);
        const unsigned char mac[] = {0x00, 0x16, 0x3E, 0x10, 0x20, static_cast<unsigned char>(i)};
        entry.macAddress.assign(mac, sizeof mac);
        entry.matchKind = 3;
        list->entries.push_back(entry);
    }
    return list;
}

void startWalk(int entries)
{
    ZETSettings::updateChooserPreferredNets(listOf(entries));
    bool wrapped = false;
    ZETSettings::nextChooserPreferredNet(true, wrapped);
}

void BM_Reference_DurableWrite(benchmark::State& state)
{
    zettest::TestRegistry registry;
    boost::shared_ptr<ZETPreferredNetworks> list = listOf(static_cast<int>(state.range(0)));
    std::string bytes(static_cast<size_t>(list->getSerLength()), '\0');
    list->serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    HKEY key = 0;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSettings, 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0) != ERROR_SUCCESS) {
        state.SkipWithError("cannot create the key");
        return;
    }
    for (auto _ : state) {
        // Vary one byte, so that no layer can skip a write of the same data.
        ++bytes[0];
        RegSetValueExW(key, L"ZET_BENCH_REFERENCE", 0, REG_BINARY, reinterpret_cast<const BYTE*>(bytes.data()),
                       static_cast<DWORD>(bytes.size()));
    }
    RegCloseKey(key);
    state.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(BM_Reference_DurableWrite)->Arg(10)->Arg(255)->UseRealTime();

void BM_Chooser_nextStep(benchmark::State& state)
{
    zettest::TestRegistry registry;
    startWalk(static_cast<int>(state.range(0)));
    bool wrapped = false;
    const double committed = chooserbench::committedTransactions();
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::nextChooserPreferredNet(false, wrapped));
    chooserbench::reportCommits(state, "commits_per_step", committed);
}
BENCHMARK(BM_Chooser_nextStep)->Arg(10)->Arg(255)->UseRealTime();

// This process and three helpers step one list at once. The time is that of this process's
// steps, each of which waits its turn; steps_all counts every process's steps per second.
void BM_Chooser_nextStep_4Processes(benchmark::State& state)
{
    zettest::TestRegistry registry;
    startWalk(static_cast<int>(state.range(0)));
    chooserbench::ConcurrentSteppers helpers(3);
    const long helperStepsBefore = helpers.steps();
    bool wrapped = false;
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::nextChooserPreferredNet(false, wrapped));
    const long helperSteps = helpers.stop() - helperStepsBefore;
    state.counters["steps_all"] = benchmark::Counter(static_cast<double>(state.iterations() + helperSteps),
                                                     benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Chooser_nextStep_4Processes)->Arg(10)->Arg(255)->UseRealTime();

}  // namespace
