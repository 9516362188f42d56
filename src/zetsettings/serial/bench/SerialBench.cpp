// Serial forms against the floor of memcpy over the same bytes, in the same run: a preferred
// list of 255 entries, an alert map of 1,000 entries and a fallback key map of 100 entries.
// Each reports bytes per second; writing is the writer's whole path (size, one allocation,
// write), reading the reader's (a fresh record, read, released).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zetsettings/serial/ZETAlertSettings.h"
#include "zetsettings/serial/ZETFallbackKeySettings.h"
#include "zetsettings/serial/ZETPreferredNetworks.h"
#include "zetsettings/serial/ser_map.h"

namespace {

using FallbackKeys = ser_map<ser_wstring, ZETFallbackKeySettings>;

void fill(ZETPreferredNetworks& networks)
{
    networks.position = 17;
    for (int i = 0; i < 255; ++i) {
        ZETPreferredNetEntry entry;
        entry.netName = L"wireless-network-" + std::to_wstring(i);
        const unsigned char mac[6] = {0x00, 0x1B, 0x2C, 0x3D, static_cast<unsigned char>(i >> 8),
                                      static_cast<unsigned char>(i)};
        entry.macAddress.assign(mac, sizeof mac);
        entry.entryFlag = 1;
        entry.matchKind = static_cast<unsigned char>(i % 4);
        entry.matchByte1 = static_cast<unsigned char>(i);
        entry.matchByte2 = 2;
        networks.entries.push_back(entry);
    }
}

void fill(ZETAlertSettings& alerts)
{
    for (unsigned i = 0; i < 1000; ++i)
        alerts.states[i * 7] = i % 2;
}

void fill(FallbackKeys& keys)
{
    for (int i = 0; i < 100; ++i) {
        ZETFallbackKeySettings key;
        key.keyText1 = L"passphrase of the fallback key number " + std::to_wstring(i);
        key.keyText2 = L"identity-" + std::to_wstring(i);
        key.keyBytes = std::string(32, static_cast<char>(i));
        keys.emplace(ser_wstring(L"Fallback network " + std::to_wstring(i)), key);
    }
}

template <typename T>
std::vector<unsigned char> bytesOf()
{
    T object;
    fill(object);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(object.getSerLength()));
    object.serialize(bytes.data());
    return bytes;
}

template <typename T>
void memcpyFloor(benchmark::State& state)
{
    const std::vector<unsigned char> source = bytesOf<T>();
    std::vector<unsigned char> dest(source.size());
    for (auto _ : state) {
        std::memcpy(dest.data(), source.data(), source.size());
        benchmark::DoNotOptimize(dest.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(source.size()));
}

template <typename T>
void serializeForm(benchmark::State& state)
{
    T object;
    fill(object);
    int64_t length = 0;
    for (auto _ : state) {
        const int size = object.getSerLength();
        unsigned char* block = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(size)));
        benchmark::DoNotOptimize(object.serialize(block));
        benchmark::ClobberMemory();
        std::free(block);
        length = size;
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length);
}

template <typename T>
void deserializeForm(benchmark::State& state)
{
    const std::vector<unsigned char> bytes = bytesOf<T>();
    for (auto _ : state) {
        T object;
        const int read = object.deserialize(bytes.data(), static_cast<int>(bytes.size()));
        if (read != static_cast<int>(bytes.size()))
            state.SkipWithError("read fell short");
        benchmark::DoNotOptimize(object);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

} // namespace

BENCHMARK_TEMPLATE(memcpyFloor, ZETPreferredNetworks)->Name("serial/preferred_255/memcpy");
BENCHMARK_TEMPLATE(serializeForm, ZETPreferredNetworks)->Name("serial/preferred_255/serialize");
BENCHMARK_TEMPLATE(deserializeForm, ZETPreferredNetworks)->Name("serial/preferred_255/deserialize");
BENCHMARK_TEMPLATE(memcpyFloor, ZETAlertSettings)->Name("serial/alerts_1000/memcpy");
BENCHMARK_TEMPLATE(serializeForm, ZETAlertSettings)->Name("serial/alerts_1000/serialize");
BENCHMARK_TEMPLATE(deserializeForm, ZETAlertSettings)->Name("serial/alerts_1000/deserialize");
BENCHMARK_TEMPLATE(memcpyFloor, FallbackKeys)->Name("serial/fallback_keys_100/memcpy");
BENCHMARK_TEMPLATE(serializeForm, FallbackKeys)->Name("serial/fallback_keys_100/serialize");
BENCHMARK_TEMPLATE(deserializeForm, FallbackKeys)->Name("serial/fallback_keys_100/deserialize");
