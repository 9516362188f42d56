// Whole-operation test: a process killed with SIGKILL in the middle of an operation that makes
// many registry writes leaves all of them or none, and no committed state ever holds part of
// one.
//
// Two operations, each on its own store:
// - setFallbackSettings on a large database. The contract rewrites every record, so a worker
//   first stores every record with one stray byte behind its form (in one batch), then calls
//   setFallbackSettings, which stores each record's form alone: in every state some other
//   process can see, either every record has the stray byte or none has.
// - `zetsettings reg import` of a file of many values, each holding the file's generation:
//   the tool is run with files of alternating generations and killed; every value must hold
//   the same one.
// The checker reads a committed state whole: it opens a batch and makes a write first, so that
// its reads are made in one transaction; then drops the batch.
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <fstream>
#include <set>
#include <stdexcept>
#include <iostream>
#include <random>
#include <vector>

#include <zetsettings/ZETSettings.h>
#include <zetsettings/platform/RegistryBatch.h>

#include "Forms.h"
#include "Processes.h"
#include "StressRoles.h"
#include "support/ZETSettingsTestAccess.h"

namespace zetstress {
namespace {

using Clock = std::chrono::steady_clock;

const wchar_t kDatabaseKey[] = L"Software\\Orvane\\QXL\\FallbackDatabase";
const wchar_t kImportKey[] = L"Software\\WholeImport";
const wchar_t kScratchKey[] = L"Software\\WholeScratch";
const long kOwners = 20;
const long kImportKeys = 20;

std::wstring ownerOf(long record)
{
    return L"whole-owner-" + std::to_wstring(record % kOwners);
}

// Calls visit(key, value name, data) for every value of every subkey of `parent`.
template <class Visit>
void forEachValue(const std::wstring& parent, REGSAM access, Visit visit)
{
    HKEY top = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, parent.c_str(), 0, KEY_READ, &top) != ERROR_SUCCESS)
        return;
    wchar_t name[512];
    DWORD units = 512;
    for (DWORD k = 0; RegEnumKeyExW(top, k, name, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++k, units = 512) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(top, name, 0, access, &key) != ERROR_SUCCESS)
            continue;
        BYTE data[4096];
        DWORD size = sizeof(data);
        units = 512;
        for (DWORD v = 0; RegEnumValueW(key, v, name, &units, nullptr, nullptr, data, &size) == ERROR_SUCCESS;
             ++v, units = 512, size = sizeof(data))
            visit(key, std::wstring(name, units), std::string(reinterpret_cast<char*>(data), size));
        RegCloseKey(key);
    }
    RegCloseKey(top);
}

// Whether the stored bytes are a record's form and nothing behind it.
bool isBareForm(const std::string& data)
{
    ZETFallbackSettings record;
    return record.deserialize(reinterpret_cast<const unsigned char*>(data.data()), static_cast<int>(data.size())) ==
           static_cast<int>(data.size());
}

void plantDatabase(long records)
{
    ZETOwnerToNetworkMap map;
    for (long i = 0; i < records; ++i) {
        const auto record = fallbackForm(ownerOf(i), L"Whole network " + std::to_wstring(i), L"planted");
        ZETNetworkToFallbackSettingsMap& entry = map.owners[record->owner];
        entry.owner = record->owner;
        entry.networks[record->network] = *record;
    }
    ZETSettingsTestAccess::saveFallbackSettings(map);
}

// Every record gets a stray byte behind its form, in one commit.
void strayEveryRecord()
{
    zet::RegistryBatch batch;
    forEachValue(kDatabaseKey, KEY_ALL_ACCESS, [](HKEY owner, const std::wstring& name, const std::string& data) {
        const std::string stray = data + '\xEE';
        if (isBareForm(data))
            RegSetValueExW(owner, name.c_str(), 0, REG_BINARY, reinterpret_cast<const BYTE*>(stray.data()),
                           static_cast<DWORD>(stray.size()));
    });
}

// Runs `--cycles` cycles, or without end when 0.
int wholeFallbackWorker(const Options& options)
{
    const long cycles = options.number("cycles", 0);
    for (long cycle = 1; cycles == 0 || cycle <= cycles; ++cycle) {
        strayEveryRecord();
        ZETSettings::setFallbackSettings(fallbackForm(ownerOf(cycle), L"Added " + std::to_wstring(cycle), L"added"));
    }
    return 0;
}

// ---- the import files -----------------------------------------------------------------------

std::string importFile(const std::string& folder, long generation, long values)
{
    const std::string path = folder + "/generation" + std::to_string(generation) + ".reg";
    std::wstring text = L"Windows Registry Editor Version 5.00\r\n\r\n";
    for (long key = 0; key < kImportKeys; ++key) {
        text += L"[HKEY_LOCAL_MACHINE\\" + std::wstring(kImportKey) + L"\\Key" + std::to_wstring(key) + L"]\r\n";
        for (long value = key; value < values; value += kImportKeys)
            text += L"\"Value" + std::to_wstring(value) + L"\"=dword:" + std::to_wstring(generation) + L"\r\n";
        text += L"\r\n";
    }
    std::ofstream(path, std::ios::binary) << "\xFF\xFE" + utf16(text);
    return path;
}

// ---- the checker ----------------------------------------------------------------------------

// Opens a batch whose reads are all made in one transaction: its first write begins it.
class WholeRead {
public:
    WholeRead()
    {
        HKEY scratch = nullptr;
        const DWORD any = 0;
        if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kScratchKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &scratch,
                            nullptr) != ERROR_SUCCESS ||
            RegSetValueExW(scratch, L"read", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&any), sizeof(any)) !=
                ERROR_SUCCESS)
            throw std::runtime_error("the scratch value can't be written");
        RegCloseKey(scratch);
    }
    ~WholeRead() { m_batch.discard(); }

private:
    zet::RegistryBatch m_batch;
};

void checkFallback(long records, Violations& fault)
{
    long stray = 0, bare = 0;
    forEachValue(kDatabaseKey, KEY_READ,
                 [&](HKEY, const std::wstring&, const std::string& data) { ++(isBareForm(data) ? bare : stray); });
    fault.expect(stray == 0 || bare == 0, std::to_string(stray) + " records with the stray byte and " +
                                              std::to_string(bare) + " without");
    fault.expect(stray + bare >= records, "only " + std::to_string(stray + bare) + " of " + std::to_string(records) +
                                              " records");
}

void checkImport(long values, Violations& fault)
{
    std::set<uint32_t> generations;
    long found = 0;
    forEachValue(kImportKey, KEY_READ, [&](HKEY, const std::wstring&, const std::string& data) {
        uint32_t generation = 0;
        std::memcpy(&generation, data.data(), std::min<std::size_t>(4, data.size()));
        generations.insert(generation);
        ++found;
    });
    fault.expect(found == 0 || (found == values && generations.size() == 1),
                 std::to_string(found) + " of " + std::to_string(values) + " values, from " +
                     std::to_string(generations.size()) + " imports");
}

// ---- the driver -----------------------------------------------------------------------------

// An operation killed at random instants: `start(run)` starts run number `run`; run 0 is one
// whole operation that ends by itself, and times the kills, which fall within `spread` times it.
struct Operation {
    std::string what;  // also what whole-check checks
    long expected;
    std::function<pid_t(long run)> start;
    double spread;
    bool endless;  // the later runs never end by themselves, so checks may run beside them
};

class WholeDriver {
public:
    explicit WholeDriver(const Options& options)
        : m_kills(options.number("kills", 100)),
          m_seed(static_cast<unsigned>(options.number("seed", std::random_device()()))), m_random(m_seed)
    {
    }

    // A check follows every kill, and every few kills one runs beside an endless operation:
    // what it sees must be a committed state too.
    void run(const Operation& operation)
    {
        const int before = fault.count();
        const Clock::time_point start = Clock::now();
        const Ending whole = killUnlessEnded(operation.start(0), 120000);
        const double length = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        fault.expect(whole.succeeded(), "a whole " + operation.what + " run " + describe(whole));
        check(operation);
        long ended = 0;
        for (long kill = 0; kill < m_kills && fault.count() == before; ++kill) {
            const pid_t pid = operation.start(kill + 1);
            if (operation.endless && kill % 5 == 4)
                check(operation);
            pauseMilliseconds(
                static_cast<int>(std::uniform_real_distribution<double>(0, operation.spread * length)(m_random)));
            const Ending ending = killUnlessEnded(pid);
            ended += ending.finished;
            fault.expect(!ending.finished || (!operation.endless && ending.succeeded()),
                         "a " + operation.what + " run " + describe(ending) + " by itself");
            check(operation);
        }
        std::cout << "whole test, " << operation.what << " on " << operation.expected << " (seed " << m_seed
                  << "): " << m_kills << " runs, a whole one takes " << static_cast<long>(length) << " ms, "
                  << m_kills - ended << " killed; " << fault.count() - before << " violation(s)\n";
    }

    Violations fault;

private:
    void check(const Operation& operation)
    {
        runChecked({"whole-check", "--what", operation.what, "--expected", std::to_string(operation.expected)}, 60000,
                   fault, "the " + operation.what + " check");
    }

    long m_kills;
    unsigned m_seed;
    std::mt19937 m_random;
};

int wholeDriver(const Options& options)
{
    WholeDriver driver(options);
    const long records = options.number("records", 2000), values = options.number("values", 2000);
    {
        RunDirectory run;
        plantDatabase(records);
        driver.run({"fallback", records, [](long n) {
                                  return startSelf({"whole-fallback-worker", "--cycles", n == 0 ? "1" : "0"});
                              }, 3, true});
    }
    const std::string tool = options.text("tool", "");
    RunDirectory run;
    const std::string files[] = {importFile(run.path(), 1, values), importFile(run.path(), 2, values)};
    driver.run({"import", values, [&](long n) { return startProgram(tool, {"reg", "import", files[n % 2]}); }, 1.2,
                false});
    return driver.fault.exitCode();
}

int wholeCheck(const Options& options)
{
    const WholeRead whole;
    Violations fault;
    (options.text("what", "") == "import" ? checkImport : checkFallback)(options.number("expected", 0), fault);
    return fault.exitCode();
}

const bool kRoles = addRoles({{"whole", wholeDriver}, {"whole-fallback-worker", wholeFallbackWorker},
                              {"whole-check", wholeCheck}});

}  // namespace
}  // namespace zetstress
