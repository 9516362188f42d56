// The network settings store with 1, 100 and 10,000 profiles stored: the read of one present
// profile (decryption included) should cost the same at every size, the listing grow with it.
// Beside them, the bare decryption of a profile's protected member, which every read includes.
#include <benchmark/benchmark.h>

#include <string>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/records/bench/RecordBenchSupport.h"

using namespace recordbench;

namespace {

typedef boost::shared_ptr<ZETNetworkSettings> Profile;

std::wstring networkName(int index)
{
    return L"Office WLAN " + std::to_wstring(index);
}

ZETBuf secretOf(int index)
{
    const std::string secret = "pre-shared key " + std::to_string(index);
    return ZETBuf(secret.data(), secret.size());
}

Profile makeProfile(int index)
{
    Profile profile(new ZETNetworkSettings);
    profile->profileText = networkName(index);
    profile->profileFlag1 = 1;
    profile->protectedBlob = secretOf(index);
    const std::string clear(64, 'c');
    profile->plainBlob = ZETBuf(clear.data(), clear.size());
    return profile;
}

void fillProfiles(int profiles)
{
    for (int i = 0; i < profiles; ++i)
        ZETSettings::setNetworkSettings(networkName(i), makeProfile(i));
}

void getPresentProfile(benchmark::State& state, int profiles)
{
    ensureFilled("network settings", profiles, fillProfiles);
    const std::wstring name = networkName(profiles / 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getNetworkSettings(name));
}

void setPresentProfile(benchmark::State& state, int profiles)
{
    ensureFilled("network settings", profiles, fillProfiles);
    const int index = profiles / 2;
    const Profile profile = makeProfile(index);
    for (auto _ : state) {
        // A write leaves ciphertext in the caller's record: put the plain secret back first.
        profile->protectedBlob = secretOf(index);
        ZETSettings::setNetworkSettings(networkName(index), profile);
    }
}

void listProfiles(benchmark::State& state, int profiles)
{
    ensureFilled("network settings", profiles, fillProfiles);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getNetworkSettingsKeys());
    reportPerEntry(state, profiles);
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

const bool registered = registerBySize({{"BM_NetworkSettings_getPresent", getPresentProfile, false},
                                        {"BM_NetworkSettings_setPresent", setPresentProfile, true},
                                        {"BM_NetworkSettings_listKeys", listProfiles, false}});

}  // namespace
