// setFallbackSettings rewrites every record of the database: its cost per stored record at
// 100, 1,000 and 10,000 records, and the durable commits of one call as LMDB counts them
// (native only: the count looks inside the portable store).
#include <benchmark/benchmark.h>

#include <string>

#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/records/bench/StoreCommits.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/records/bench/RecordBenchSupport.h"

using namespace recordbench;

namespace {

const int kOwners = 100;

boost::shared_ptr<ZETFallbackSettings> recordOf(int index)
{
    boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
    record->owner = L"owner" + std::to_wstring(index % kOwners);
    record->network = L"Rewritten WLAN " + std::to_wstring(index);
    record->fallbackBytes1 = std::string(24, 'f');
    record->fallbackBytes2 = std::string(8, 'g');
    return record;
}

// Each record as its own value, all in one commit.
void fillDatabase(int records)
{
    zet::RegistryBatch batch;
    for (int i = 0; i < records; ++i) {
        const auto record = recordOf(i);
        const std::wstring path = L"Software\\Orvane\\QXL\\FallbackDatabase\\" + record->owner;
        writeValue(path.c_str(), ZETSettingsTestAccess::createCaseBitmap(record->network), serialForm(*record));
    }
}

void setWholeDatabase(benchmark::State& state, int records)
{
    ensureFilled("fallback rewrite", records, fillDatabase);
    const auto record = recordOf(records / 2);
    const double committedBefore = recordbench::committedTransactions();
    for (auto _ : state)
        ZETSettings::setFallbackSettings(record);
    recordbench::reportCommits(state, "commits", committedBefore);
    reportPerEntry(state, records);
}

const bool registered = [] {
    for (int records : {100, 1000, 10000})
        benchmark::RegisterBenchmark(("BM_FallbackDatabase_rewrite/records:" + std::to_string(records)).c_str(),
                                     setWholeDatabase, records)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    return true;
}();

}  // namespace
