// Shared by the record store benchmarks: a store filled once per size and kept while the
// benchmarks of that size run, and the cost per stored entry as a counter.
#ifndef ZETSETTINGS_RECORDS_BENCH_RECORDBENCHSUPPORT_H
#define ZETSETTINGS_RECORDS_BENCH_RECORDBENCHSUPPORT_H

#include <benchmark/benchmark.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETSerializeInterface.h"

namespace recordbench {

const int kSizes[] = {1, 100, 10000};

// Google Benchmark calls a benchmark function several times: fill each store only once.
inline void ensureFilled(const std::string& store, int entries, const std::function<void(int)>& fill)
{
    struct Filled {
        zettest::TestRegistry registry;
        std::string store;
        int entries;
    };
    static std::unique_ptr<Filled> current;
    if (current && current->store == store && current->entries == entries)
        return;
    current.reset();
    current.reset(new Filled{{}, store, entries});
    fill(entries);
}

// Seconds per stored entry, so that sizes compare directly.
inline void reportPerEntry(benchmark::State& state, int entries)
{
    state.counters["time_per_entry"] = benchmark::Counter(
        static_cast<double>(entries), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Writes bytes as a binary value below HKEY_LOCAL_MACHINE, as another program would.
inline void writeValue(const wchar_t* path, const std::wstring& name, const std::string& bytes)
{
    JetByteTools::CRegistryKey(HKEY_LOCAL_MACHINE)
        .CreateOrOpenKeyEx(path, 0, L"", 0, KEY_ALL_ACCESS)
        .SetValue(name.c_str(), reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
}

inline std::string serialForm(const ZETSerializeInterface& object)
{
    std::string bytes(static_cast<size_t>(object.getSerLength()), '\0');
    object.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    return bytes;
}

typedef void (*SizedBenchmark)(benchmark::State&, int entries);

struct Sized {
    std::string name;
    SizedBenchmark function;
    // Writes wait for the disk rather than the processor: time them by the clock.
    bool writes;
};

// Registers each benchmark for each size, grouped by size so that each store is filled once.
inline bool registerBySize(std::initializer_list<Sized> benchmarks)
{
    for (int entries : kSizes)
        for (const Sized& sized : benchmarks) {
            benchmark::internal::Benchmark* registered = benchmark::RegisterBenchmark(
                (sized.name + "/entries:" + std::to_string(entries)).c_str(), sized.function, entries);
            if (sized.writes)
                registered->UseRealTime();
        }
    return true;
}

}  // namespace recordbench

#endif
