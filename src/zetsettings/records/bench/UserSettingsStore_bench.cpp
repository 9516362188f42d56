// The user settings map with 1, 100 and 10,000 users stored: every call decrypts the whole map,
// and a set encrypts and writes it again.
#include <benchmark/benchmark.h>

#include <string>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/records/bench/RecordBenchSupport.h"

using namespace recordbench;

namespace {

std::wstring userName(int index)
{
    return L"domain\\user" + std::to_wstring(index);
}

// Stores the whole map in one write, as the store itself would.
void fillUsers(int users)
{
    ZETUserSettingsMap map;
    for (int i = 0; i < users; ++i) {
        ZETUserSettings& record = map.users[ser_wstring(userName(i))];
        record.userText = L"profile of user " + std::to_wstring(i);
        record.userBytes = std::string(16, 'b');
    }
    const std::string plain = serialForm(map);
    const ZETBuf cipher = ZETProtectData().encryptData(ZETBuf(plain.data(), plain.size()), ZETBuf(""));
    writeValue(L"Software\\Orvane\\QXL", L"UserSettings", cipher.bytes());
}

void getUser(benchmark::State& state, int users)
{
    ensureFilled("users", users, fillUsers);
    // Half the map lies before the user: the lookup walks it.
    const std::wstring name = userName(users / 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZETSettings::getUserSettings(name));
    reportPerEntry(state, users);
}

void setUser(benchmark::State& state, int users)
{
    ensureFilled("users", users, fillUsers);
    boost::shared_ptr<ZETUserSettings> record(new ZETUserSettings);
    record->userText = L"replaced profile";
    const std::wstring name = userName(users / 2);
    for (auto _ : state)
        ZETSettings::setUserSettings(name, record);
    reportPerEntry(state, users);
}

const bool registered = registerBySize({{"BM_UserSettings_get", getUser, false}, {"BM_UserSettings_set", setUser, true}});

}  // namespace
