// The fallback database with 1, 100 and 10,000 records stored, spread over about the square
// root of that many owners. A get reads every record; a set reads and rewrites them all.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/records/bench/RecordBenchSupport.h"

using namespace recordbench;

namespace {

int ownerCount(int records)
{
    return static_cast<int>(std::ceil(std::sqrt(static_cast<double>(records))));
}

std::wstring ownerName(int index)
{
    return L"owner" + std::to_wstring(index);
}

std::wstring networkName(int index)
{
    return L"Office WLAN " + std::to_wstring(index);
}

boost::shared_ptr<ZETFallbackSettings> makeRecord(int owner, int network)
{
    boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
    record->owner = ownerName(owner);
    record->network = networkName(network);
    record->fallbackBytes1 = std::string(24, 'f');
    record->fallbackBytes2 = std::string(8, 'g');
    return record;
}

// Writes each record as its own value, as the store does, without reloading the database
// for every record.
void fillDatabase(int records)
{
    const int owners = ownerCount(records);
    for (int i = 0; i < records; ++i) {
        const std::wstring path = L"Software\\Orvane\\QXL\\FallbackDatabase\\" + ownerName(i % owners);
        writeValue(path.c_str(), ZETSettingsTestAccess::createCaseBitmap(networkName(i)),
                   serialForm(*makeRecord(i % owners, i)));
    }
}

void getRecord(benchmark::State& state, int records)
{
    ensureFilled("fallback database", records, fillDatabase);
    const int index = records / 2;
    const std::wstring owner = ownerName(index % ownerCount(records));
    const std::wstring network = networkName(index);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getFallbackSettings(owner, network));
    reportPerEntry(state, records);
}

void setRecord(benchmark::State& state, int records)
{
    ensureFilled("fallback database", records, fillDatabase);
    const int index = records / 2;
    const auto record = makeRecord(index % ownerCount(records), index);
    for (auto _ : state)
        ZETSettings::setFallbackSettings(record);
    reportPerEntry(state, records);
}

const bool registered =
    registerBySize({{"BM_FallbackDatabase_get", getRecord, false}, {"BM_FallbackDatabase_set", setRecord, true}});

}  // namespace
