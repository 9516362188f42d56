// The LMDB floor of every operation of the suite: one call is recorded at the LMDB interface
// and its traffic replayed directly on the same store, so that the operation's time and the
// floor's, at the same size and in the same run, compare one to one. Names: floor/<operation>/
// n:<entries>. An operation that makes no LMDB call has no floor and reports an error.
//
// The call recorded is one made right after a commit elsewhere in the store: a thread answers
// repeated reads from what it remembers while nothing was committed (the key paths it walked,
// the value it read last), and would otherwise issue no traffic at all. The floor is thus
// what looking the same things up directly on LMDB costs; the suite's own figure is the steady
// state, which may come out below it.
#include <benchmark/benchmark.h>

#include "OperationSuite.h"
#include "zetsettings/platform/Win32.h"
#include "floor/LmdbTraffic.h"

namespace {

using opsuite::Operation;

void prepare(const Operation& operation, opsuite::Call& call)
{
    if (operation.restore)
        operation.restore(call);
}

// One commit that no operation looks at, so that nothing remembered counts any more.
void commitElsewhere()
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\ZetFloorBench", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
        return;
    static DWORD round = 0;
    ++round;
    RegSetValueExW(key, L"Round", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&round), sizeof(round));
    RegCloseKey(key);
}

floorbench::Traffic recordOneCall(const Operation& operation, int entries)
{
    opsuite::Call call{entries, 0, 0};
    // The first call opens the store and its keys; the second is the one that counts.
    prepare(operation, call);
    operation.invoke(call);
    prepare(operation, call);
    commitElsewhere();
    floorbench::startRecording();
    operation.invoke(call);
    return floorbench::stopRecording();
}

void replayFloor(benchmark::State& state, const Operation& operation, int entries)
{
    opsuite::ensurePlanted(operation.plant, entries);
    const floorbench::Traffic traffic = recordOneCall(operation, entries);
    if (!traffic.env) {
        state.SkipWithError("no LMDB traffic");
        return;
    }
    floorbench::Replayer replayer(traffic);
    for (auto _ : state) {
        if (replayer.deletes()) {
            state.PauseTiming();
            replayer.restoreDeleted();
            state.ResumeTiming();
        }
        replayer.replay();
    }
    using floorbench::Event;
    state.counters["snapshots"] = traffic.count(Event::BeginRead);
    state.counters["gets"] = traffic.count(Event::Get) + traffic.count(Event::CursorGet);
    state.counters["commits"] = traffic.count(Event::BeginWrite);
    state.counters["refused"] = static_cast<double>(replayer.failures());
}

void registerFloors()
{
    for (int entries : opsuite::kSizes)
        for (const Operation& operation : opsuite::operations()) {
            if (!(operation.traits & opsuite::kSized) && entries != 1)
                continue;
            // Ten thousand commits recorded and replayed add minutes and no insight over the
            // hundred-entry store, where the commits per call already show.
            if ((operation.traits & opsuite::kRewritesAll) && entries == opsuite::kSizes[2])
                continue;
            benchmark::RegisterBenchmark(("floor/" + operation.name + "/n:" + std::to_string(entries)).c_str(),
                                         replayFloor, operation, entries)
                ->UseRealTime();
        }
}

}  // namespace

int main(int argc, char** argv)
{
    registerFloors();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
