// The portable registry's costs, each beside its floor: the same work done directly on an LMDB
// environment opened with the same flags. Reported, never asserted.
#include <benchmark/benchmark.h>
#include <lmdb.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/ByteOrder.h"
#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/Records.h"
#include "zetsettings/platform/posix/registry/RecordKeys.h"
#include "zetsettings/platform/posix/registry/RegistryTree.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"

namespace {

using namespace zet::portable::registry;

const wchar_t kKeyPath[] = L"Software\\Orvane\\QXL\\Bench";
const wchar_t kValueName[] = L"ZET_NC_ACTIVE";

// A store of its own with one key holding one REG_DWORD, open for the whole benchmark.
class BenchRegistry {
public:
    BenchRegistry()
    {
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKeyPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
        const DWORD value = 1;
        RegSetValueExW(m_key, kValueName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
    }
    ~BenchRegistry() { RegCloseKey(m_key); }

    HKEY key() const { return m_key; }

private:
    zettest::TestRegistry m_registry;
    HKEY m_key = nullptr;
};

// A bare LMDB environment with the store's flags and one record shaped like the value above.
class FloorEnvironment {
public:
    FloorEnvironment()
    {
        char pattern[] = "/tmp/zetsettings-floor-XXXXXX";
        m_directory = mkdtemp(pattern);
        mdb_env_create(&m_env);
        mdb_env_open(m_env, m_directory.c_str(), MDB_NOTLS | MDB_NOMETASYNC, 0644);
        MDB_txn* txn = nullptr;
        mdb_txn_begin(m_env, nullptr, 0, &txn);
        mdb_dbi_open(txn, nullptr, 0, &m_dbi);
        mdb_txn_commit(txn);
        m_key = RecordKeys::nameKey(RecordKeys::kValue, 16, CaseFolding::fold(u"ZET_NC_ACTIVE"),
                                    &RecordKeys::defaultHash);
        std::string dword;
        appendLittleEndian32(dword, 1);
        m_record = ValueRecordView::build(u"ZET_NC_ACTIVE", REG_DWORD, dword);
        put(m_key);
        mdb_txn_begin(m_env, nullptr, MDB_RDONLY, &m_reader);
        mdb_txn_reset(m_reader);
    }
    ~FloorEnvironment()
    {
        mdb_txn_abort(m_reader);
        mdb_env_close(m_env);
        std::filesystem::remove_all(m_directory);
    }

    // Lookups as the registry makes them: a renewed snapshot, gets, the data copied out.
    DWORD get(const std::string& key, int gets = 1)
    {
        mdb_txn_renew(m_reader);
        MDB_val lmdbKey = {key.size(), const_cast<char*>(key.data())}, data;
        DWORD value = 0;
        for (int i = 0; i < gets; ++i) {
            if (mdb_get(m_reader, m_dbi, &lmdbKey, &data) == MDB_SUCCESS)
                value += readLittleEndian32(static_cast<const unsigned char*>(data.mv_data) + data.mv_size - 4);
        }
        mdb_txn_reset(m_reader);
        return value;
    }

    // One durable write: a write transaction with one put, committed.
    void put(const std::string& key)
    {
        MDB_txn* txn = nullptr;
        mdb_txn_begin(m_env, nullptr, 0, &txn);
        MDB_val lmdbKey = {key.size(), const_cast<char*>(key.data())};
        MDB_val data = {m_record.size(), const_cast<char*>(m_record.data())};
        mdb_put(txn, m_dbi, &lmdbKey, &data, 0);
        mdb_txn_commit(txn);
    }

    const std::string& key() const { return m_key; }

private:
    std::string m_directory;
    MDB_env* m_env = nullptr;
    MDB_dbi m_dbi = 0;
    MDB_txn* m_reader = nullptr;
    std::string m_key;
    std::string m_record;
};

void RegistryQueryPresentDword(benchmark::State& state)
{
    BenchRegistry registry;
    for (auto _ : state) {
        DWORD value = 0, size = sizeof(value), type = 0;
        benchmark::DoNotOptimize(RegQueryValueExW(registry.key(), kValueName, nullptr, &type,
                                                  reinterpret_cast<BYTE*>(&value), &size));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(RegistryQueryPresentDword);

void FloorLmdbGet(benchmark::State& state)
{
    FloorEnvironment floor;
    for (auto _ : state)
        benchmark::DoNotOptimize(floor.get(floor.key()));
}
BENCHMARK(FloorLmdbGet);

void RegistryOpenQueryClose(benchmark::State& state)
{
    BenchRegistry registry;
    for (auto _ : state) {
        HKEY key = nullptr;
        DWORD value = 0, size = sizeof(value);
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKeyPath, 0, KEY_READ, &key);
        benchmark::DoNotOptimize(
            RegQueryValueExW(key, kValueName, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size));
        RegCloseKey(key);
    }
}
BENCHMARK(RegistryOpenQueryClose);

// The open walks four names (one get each) in one snapshot, the query one more in another.
void FloorLmdbFiveGetsInTwoSnapshots(benchmark::State& state)
{
    FloorEnvironment floor;
    for (auto _ : state) {
        benchmark::DoNotOptimize(floor.get(floor.key(), 4));
        benchmark::DoNotOptimize(floor.get(floor.key()));
    }
}
BENCHMARK(FloorLmdbFiveGetsInTwoSnapshots);

void RegistrySetDwordDurably(benchmark::State& state)
{
    BenchRegistry registry;
    DWORD value = 0;
    for (auto _ : state) {
        ++value;
        benchmark::DoNotOptimize(
            RegSetValueExW(registry.key(), kValueName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4));
    }
}
BENCHMARK(RegistrySetDwordDurably)->UseRealTime();

void FloorLmdbPutCommit(benchmark::State& state)
{
    FloorEnvironment floor;
    for (auto _ : state)
        floor.put(floor.key());
}
BENCHMARK(FloorLmdbPutCommit)->UseRealTime();

// Enumerating all n values by index: linear if each index continues where the last stopped.
void RegistryEnumerateAllValues(benchmark::State& state)
{
    BenchRegistry registry;
    const uint64_t id = HandleTable::instance().find(registry.key())->id;
    StoreCatalog::instance().current()->write([&](WriteTransaction& transaction) -> LONG {
        RegistryTree tree(transaction.txn(), transaction.dbi());
        for (int64_t i = 0; i < state.range(0); ++i)
            tree.setValue(id, RegistryName::of(u"Value" + std::u16string(1, u'A' + i % 26) +
                                               std::u16string(i / 26 % 26 + 1, u'x') + std::u16string(i / 676 + 1, u'y')),
                          REG_DWORD, std::string(4, '\1'));
        return ERROR_SUCCESS;
    });
    wchar_t name[256];
    for (auto _ : state) {
        DWORD index = 0, units = 256;
        while (RegEnumValueW(registry.key(), index, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
            ++index;
            units = 256;
        }
        benchmark::DoNotOptimize(index);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(RegistryEnumerateAllValues)->RangeMultiplier(4)->Range(64, 4096)->Complexity();

}  // namespace
