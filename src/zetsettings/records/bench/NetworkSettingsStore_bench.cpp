// The network settings store with 1, 100 and 10,000 profiles stored. Each size is filled once
// and its three benchmarks run on it in turn; the read of one present profile (decryption
// included) at one profile is the reference for the larger stores. Beside them, the bare
// decryption of a profile's protected member, which every read includes.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETProtectData.h"

namespace {

typedef boost::shared_ptr<ZETNetworkSettings> Profile;

const int kSizes[] = {1, 100, 10000};

std::wstring networkName(int index)
{
    return L"Office WLAN " + std::to_wstring(index);
}

Profile makeProfile(int index)
{
    Profile profile(new ZETNetworkSettings);
    profile->profileText = networkName(index);
    profile->profileFlag1 = 1;
    const std::string secret = "pre-shared key " + std::to_string(index);
    profile->protectedBlob = ZETBuf(secret.data(), secret.size());
    const std::string clear(64, 'c');
    profile->plainBlob = ZETBuf(clear.data(), clear.size());
    return profile;
}

// One store at a time, kept while the benchmarks of its size run.
class FilledStore {
public:
    static void ensure(int profiles)
    {
        static std::unique_ptr<FilledStore> current;
        if (!current || current->m_profiles != profiles) {
            current.reset();
            current.reset(new FilledStore(profiles));
        }
    }

private:
    explicit FilledStore(int profiles) : m_profiles(profiles)
    {
        for (int i = 0; i < profiles; ++i)
            ZETSettings::setNetworkSettings(networkName(i), makeProfile(i));
    }

    zettest::TestRegistry m_registry;
    int m_profiles;
};

void getPresentProfile(benchmark::State& state, int profiles)
{
    FilledStore::ensure(profiles);
    const std::wstring name = networkName(profiles / 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getNetworkSettings(name));
}

void setPresentProfile(benchmark::State& state, int profiles)
{
    FilledStore::ensure(profiles);
    const int index = profiles / 2;
    for (auto _ : state) {
        // The caller's record holds ciphertext after a write: a fresh one each time.
        state.PauseTiming();
        Profile profile = makeProfile(index);
        state.ResumeTiming();
        ZETSettings::setNetworkSettings(networkName(index), profile);
    }
}

void listProfiles(benchmark::State& state, int profiles)
{
    FilledStore::ensure(profiles);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getNetworkSettingsKeys());
    state.counters["time_per_profile"] = benchmark::Counter(
        static_cast<double>(profiles), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_NetworkSettings_decryptProtectedMemberOnly(benchmark::State& state)
{
    zettest::TestRegistry registry;
    ZETProtectData protector;
    ZETBuf plain;
    static_cast<const ZETBuf&>(makeProfile(0)->protectedBlob).serializeToBuf(plain);
    const ZETBuf ciphertext = protector.encryptData(plain, ZETBuf(""));
    for (auto _ : state)
        benchmark::DoNotOptimize(protector.decryptData(ciphertext, ZETBuf("")));
}
BENCHMARK(BM_NetworkSettings_decryptProtectedMemberOnly);

// Grouped by size so that each store is filled only once.
const bool registered = [] {
    for (int profiles : kSizes) {
        const std::string suffix = "/profiles:" + std::to_string(profiles);
        benchmark::RegisterBenchmark(("BM_NetworkSettings_getPresent" + suffix).c_str(), getPresentProfile, profiles);
        benchmark::RegisterBenchmark(("BM_NetworkSettings_setPresent" + suffix).c_str(), setPresentProfile, profiles);
        benchmark::RegisterBenchmark(("BM_NetworkSettings_listKeys" + suffix).c_str(), listProfiles, profiles);
    }
    return true;
}();

}  // namespace
