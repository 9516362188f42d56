// Every operation of ZETSettings and ZETConfigParam::LoadFromRegistry, on a store planted for
// it. Getters read a present value; each write changes what it writes, so that no layer can
// skip it; removes get their entry back, untimed, before each call.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "OperationSuite.h"
#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"

using opsuite::Call;
using opsuite::kRead;
using opsuite::kRewritesAll;
using opsuite::kShared;
using opsuite::kSized;
using opsuite::kWrite;
using JetByteTools::CRegistryKey;

namespace {

const std::wstring kNumber = L"BenchNumber";
const std::wstring kText = L"BenchText";
const std::wstring kStoredText = L"a stored text of some length";

// The entry a caller works on: distinct for each of up to 8 callers once there are 8 entries.
int target(const Call& call)
{
    return (call.entries / 2 + call.slot) % call.entries;
}

std::wstring varied(const Call& call)
{
    return L"text " + std::to_wstring(call.slot) + L"/" + std::to_wstring(call.iteration);
}

int variedNumber(const Call& call)
{
    return static_cast<int>(call.iteration * 8 + call.slot);
}

void writeKeyValue(const wchar_t* path, const wchar_t* name, const BYTE* data, DWORD size, DWORD type)
{
    HKEY key = 0;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0) != ERROR_SUCCESS)
        return;
    RegSetValueExW(key, name, 0, type, data, size);
    RegCloseKey(key);
}

void writeText(const wchar_t* path, const wchar_t* name, const std::wstring& text)
{
    writeKeyValue(path, name, reinterpret_cast<const BYTE*>(text.c_str()),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)), REG_SZ);
}

// ---- value families ----------------------------------------------------------------------

void plantValues(int)
{
    ZETSettings::intSetBaseValue(kNumber, 42);
    ZETSettings::strSetBaseValue(kText, kStoredText);
    ZETSettings::intSetConfiguratorValue(kNumber, 42);
    ZETSettings::strSetConfiguratorValue(kText, kStoredText);
    ZETSettings::intSetNetlibValue(kNumber, 42);
    ZETSettings::strSetNetlibValue(kText, kStoredText);
    ZETSettings::strSetGuiHelperValue(kText, kStoredText);
    ZETSettings::intSetRasEapValue(kNumber, 42);
    ZETSettings::strSetRasEapValue(kText, kStoredText);
    ZETSettings::intSetZetGuardValue(kNumber, 42);
    ZETSettings::strSetZetGuardValue(kText, kStoredText);
    writeText(L"SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26", kText.c_str(), kStoredText);
    // FilterClasses already in order: the check reads and leaves it.
    const std::wstring classes = std::wstring(L"ms_medium") + L'\0' + L"failover" + L'\0' + L'\0';
    writeKeyValue(L"SYSTEM\\CurrentControlSet\\Control\\Network", L"FilterClasses",
                  reinterpret_cast<const BYTE*>(classes.data()), static_cast<DWORD>(classes.size() * sizeof(wchar_t)),
                  REG_MULTI_SZ);
}

// ---- network profiles --------------------------------------------------------------------

std::wstring networkName(int index)
{
    return L"Office WLAN " + std::to_wstring(index);
}

boost::shared_ptr<ZETNetworkSettings> profileOf(int index)
{
    boost::shared_ptr<ZETNetworkSettings> profile(new ZETNetworkSettings);
    profile->profileText = networkName(index);
    profile->profileFlag1 = 1;
    const std::string secret = "pre-shared key " + std::to_string(index);
    profile->protectedBlob = ZETBuf(secret.data(), secret.size());
    const std::string clear(64, 'c');
    profile->plainBlob = ZETBuf(clear.data(), clear.size());
    return profile;
}

void plantProfiles(int entries)
{
    for (int i = 0; i < entries; ++i)
        ZETSettings::setNetworkSettings(networkName(i), profileOf(i));
}

void restoreProfile(const Call& call)
{
    ZETSettings::setNetworkSettings(networkName(target(call)), profileOf(target(call)));
}

// ---- user settings -----------------------------------------------------------------------

std::wstring userName(int index)
{
    return L"domain\\user" + std::to_wstring(index);
}

boost::shared_ptr<ZETUserSettings> userOf(int index)
{
    boost::shared_ptr<ZETUserSettings> record(new ZETUserSettings);
    record->userText = L"profile of user " + std::to_wstring(index);
    record->userBytes = std::string(16, 'b');
    return record;
}

void fillUsers(ZETUserSettingsMap& map, int entries)
{
    for (int i = 0; i < entries; ++i)
        map.users[ser_wstring(userName(i))] = *userOf(i);
}

void plantUsers(int entries)
{
    ZETUserSettingsMap map;
    fillUsers(map, entries);
    ZETSettingsTestAccess::saveUserSettings(map);
}

// ---- fallback keys -----------------------------------------------------------------------

boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > fallbackKeys(int entries)
{
    boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > keys(
        new std::map<std::wstring, ZETFallbackKeySettings>);
    for (int i = 0; i < entries; ++i) {
        ZETFallbackKeySettings& entry = (*keys)[L"Fallback" + std::to_wstring(i)];
        entry.keyText1 = L"key text " + std::to_wstring(i);
        entry.keyBytes = std::string(13, 'k');
    }
    return keys;
}

void plantFallbackKeys(int entries)
{
    ZETSettings::setFallbackKeySettings(fallbackKeys(entries));
}

// ---- fallback database: records spread over about the square root of their number of owners

int ownerCount(int records)
{
    return static_cast<int>(std::ceil(std::sqrt(static_cast<double>(records))));
}

std::wstring ownerName(int index)
{
    return L"owner" + std::to_wstring(index);
}

boost::shared_ptr<ZETFallbackSettings> fallbackRecord(int index, int records)
{
    boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
    record->owner = ownerName(index % ownerCount(records));
    record->network = networkName(index);
    record->fallbackBytes1 = std::string(24, 'f');
    record->fallbackBytes2 = std::string(8, 'g');
    return record;
}

void addToDatabase(ZETOwnerToNetworkMap& map, const ZETFallbackSettings& record)
{
    ZETNetworkToFallbackSettingsMap& owner = map.owners[record.owner];
    owner.owner = record.owner;
    owner.networks[record.network] = record;
}

void plantFallbackDatabase(int records)
{
    ZETOwnerToNetworkMap map;
    for (int i = 0; i < records; ++i)
        addToDatabase(map, *fallbackRecord(i, records));
    ZETSettingsTestAccess::saveFallbackSettings(map);
}

// Puts one record back with one write; saving never deletes what the map leaves out.
void restoreFallbackRecord(const Call& call)
{
    ZETOwnerToNetworkMap map;
    addToDatabase(map, *fallbackRecord(target(call), call.entries));
    ZETSettingsTestAccess::saveFallbackSettings(map);
}

// ---- the chooser's list and the alert states ---------------------------------------------

ZETPreferredNetEntry preferredOf(int index)
{
    ZETPreferredNetEntry entry;
    entry.netName = L"Preferred network " + std::to_wstring(index);
    const unsigned char mac[] = {0x00, 0x16, 0x3E, 0x10, static_cast<unsigned char>(index >> 8),
                                 static_cast<unsigned char>(index)};
    entry.macAddress.assign(mac, sizeof mac);
    entry.matchKind = 3;
    return entry;
}

boost::shared_ptr<ZETPreferredNetworks> preferredList(int entries)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    for (int i = 0; i < entries; ++i)
        list->entries.push_back(preferredOf(i));
    return list;
}

void plantChooser(int entries)
{
    ZETSettings::updateChooserPreferredNets(preferredList(entries));
    ZETSettings::setChooserActive(true);
    bool wrapped = false;
    ZETSettings::nextChooserPreferredNet(true, wrapped);
}

// A store of its own for the walk, one step under way: the other chooser operations stop it
// or switch the chooser off.
void plantChooserWalk(int entries)
{
    plantChooser(entries);
    bool wrapped = false;
    ZETSettings::nextChooserPreferredNet(false, wrapped);
}

// The deleted entry goes back where it was, as the list's owner would put it.
void restorePreferred(const Call& call)
{
    boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    const std::wstring name = preferredOf(target(call)).netName;
    for (const ZETPreferredNetEntry& entry : list->entries)
        if (static_cast<const std::wstring&>(entry.netName) == name)
            return;
    list->entries.push_back(preferredOf(target(call)));
    ZETSettings::updateChooserPreferredNets(list);
}

void fillAlerts(ZETAlertSettings& settings, int alerts)
{
    for (int i = 0; i < alerts; ++i)
        settings.states[static_cast<unsigned>(i)] = static_cast<unsigned>(i % 2);
}

void plantAlerts(int alerts)
{
    ZETAlertSettings settings;
    fillAlerts(settings, alerts);
    ZETSettingsTestAccess::saveAlertSettings(settings);
}

// ---- the login and the parameter table ---------------------------------------------------

void plantLogin(int)
{
    ZETSettings::setLoginData(L"operator@example", L"a password of some length", true, true, true);
}

// A machine running XP SP2 with both caption sources present, and the registry mode set.
template <int mode>
void plantParameterSources(int)
{
    const wchar_t* version = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    writeText(version, L"CurrentVersion", L"5.1");
    writeText(version, L"CSDVersion", L"Service Pack 2");
    writeText(L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}", L"", L"Network Connections");
    writeText(L"System\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
              L"{1A2B3C4D-0000-1111-2222-333344445555}\\Connection",
              L"Name", L"WLAN 7");
    // A first load leaves the table's values in the registry, for the mode that reads them.
    ZETConfigParam param;
    param.InitializeDefaults();
    param.LoadFromRegistry(L"{1A2B3C4D-0000-1111-2222-333344445555}");
    ZETSettings::intSetConfiguratorValue(L"ZET_CONFIGURATOR_REGISTRY_MODE", mode);
}

// The table is made and filled with its defaults once per thread, so that a call times the load
// alone, not the building of the table; each call loads into it again.
ZETConfigParam& parameterTable()
{
    thread_local ZETConfigParam param;
    thread_local const bool filled = (param.InitializeDefaults(), true);
    (void)filled;
    return param;
}

void loadParameters()
{
    parameterTable().LoadFromRegistry(L"\\Device\\{1A2B3C4D-0000-1111-2222-333344445555}");
}

template <typename T>
void keep(const T& value)
{
    benchmark::DoNotOptimize(value);
}

const unsigned kGet = kRead | kShared;
const unsigned kSet = kWrite | kShared;
const unsigned kSizedGet = kGet | kSized;
const unsigned kSizedSet = kSet | kSized;

const bool registered = opsuite::registerSuite({
    // Base family.
    {"intGetBaseValue", plantValues,
     [](const Call&) { keep(ZETSettings::intGetBaseValue(kNumber, 0, false)); }, kGet, nullptr},
    {"intSetBaseValue", plantValues,
     [](const Call& c) { ZETSettings::intSetBaseValue(kNumber, variedNumber(c)); }, kSet, nullptr},
    {"strGetBaseValue", plantValues,
     [](const Call&) { keep(ZETSettings::strGetBaseValue(kText, L"", false)); }, kGet, nullptr},
    {"strSetBaseValue", plantValues,
     [](const Call& c) { ZETSettings::strSetBaseValue(kText, varied(c)); }, kSet, nullptr},
    // Value families.
    {"intGetConfiguratorValue", plantValues,
     [](const Call&) { keep(ZETSettings::intGetConfiguratorValue(kNumber)); }, kGet, nullptr},
    {"intSetConfiguratorValue", plantValues,
     [](const Call& c) { ZETSettings::intSetConfiguratorValue(kNumber, variedNumber(c)); }, kSet, nullptr},
    {"strGetConfiguratorValue", plantValues,
     [](const Call&) { keep(ZETSettings::strGetConfiguratorValue(kText)); }, kGet, nullptr},
    {"strSetConfiguratorValue", plantValues,
     [](const Call& c) { ZETSettings::strSetConfiguratorValue(kText, varied(c)); }, kSet, nullptr},
    {"intGetNetlibValue", plantValues,
     [](const Call&) { keep(ZETSettings::intGetNetlibValue(kNumber, 0)); }, kGet, nullptr},
    {"intSetNetlibValue", plantValues,
     [](const Call& c) { ZETSettings::intSetNetlibValue(kNumber, variedNumber(c)); }, kSet, nullptr},
    {"strGetNetlibValue", plantValues,
     [](const Call&) { keep(ZETSettings::strGetNetlibValue(kText, L"")); }, kGet, nullptr},
    {"strSetNetlibValue", plantValues,
     [](const Call& c) { ZETSettings::strSetNetlibValue(kText, varied(c)); }, kSet, nullptr},
    {"strGetGuiHelperValue", plantValues,
     [](const Call&) { keep(ZETSettings::strGetGuiHelperValue(kText, L"")); }, kGet, nullptr},
    {"strSetGuiHelperValue", plantValues,
     [](const Call& c) { ZETSettings::strSetGuiHelperValue(kText, varied(c)); }, kSet, nullptr},
    {"intGetRasEapValue", plantValues,
     [](const Call&) { keep(ZETSettings::intGetRasEapValue(kNumber, 0)); }, kGet, nullptr},
    {"intSetRasEapValue", plantValues,
     [](const Call& c) { ZETSettings::intSetRasEapValue(kNumber, variedNumber(c)); }, kSet, nullptr},
    {"strGetRasEapValue", plantValues, [](const Call&) { keep(ZETSettings::strGetRasEapValue(kText)); }, kGet, nullptr},
    {"strSetRasEapValue", plantValues,
     [](const Call& c) { ZETSettings::strSetRasEapValue(kText, varied(c)); }, kSet, nullptr},
    {"intGetZetGuardValue", plantValues,
     [](const Call&) { keep(ZETSettings::intGetZetGuardValue(kNumber, 0, true)); }, kGet, nullptr},
    {"intSetZetGuardValue", plantValues,
     [](const Call& c) { ZETSettings::intSetZetGuardValue(kNumber, variedNumber(c)); }, kSet, nullptr},
    {"strGetZetGuardValue", plantValues,
     [](const Call&) { keep(ZETSettings::strGetZetGuardValue(kText, L"", true)); }, kGet, nullptr},
    {"strSetZetGuardValue", plantValues,
     [](const Call& c) { ZETSettings::strSetZetGuardValue(kText, varied(c)); }, kSet, nullptr},
    // RasMan's EAP settings go to the registry without the library's lock.
    {"strGetRasmanEapSettings", plantValues,
     [](const Call&) { std::wstring v; keep(ZETSettings::strGetRasmanEapSettings(kText, v)); }, kRead, nullptr},
    {"strSetRasmanEapSettings", plantValues,
     [](const Call& c) { keep(ZETSettings::strSetRasmanEapSettings(kText, varied(c))); }, kWrite, nullptr},
    {"checkNdisStackingOrder", plantValues,
     [](const Call&) { keep(ZETSettings::checkNdisStackingOrder()); }, kGet, nullptr},
    {"getNetworkSettingsKey", plantValues,
     [](const Call&) { keep(ZETSettingsTestAccess::getNetworkSettingsKey()); }, kRead, nullptr},
    {"createCaseBitmap", plantValues,
     [](const Call&) { keep(ZETSettingsTestAccess::createCaseBitmap(L"Office WLAN of Some Length")); }, kRead, nullptr},
    {"removeCaseBitmap", plantValues, [](const Call&) {
         static const std::wstring stored = ZETSettingsTestAccess::createCaseBitmap(L"Office WLAN of Some Length");
         keep(ZETSettingsTestAccess::removeCaseBitmap(stored)); }, kRead, nullptr},
    // The login.
    {"getLoginData", plantLogin,
     [](const Call&) { std::wstring u, p; bool a, b, c; ZETSettings::getLoginData(u, p, a, b, c); keep(p); }, kGet, nullptr},
    {"setLoginData", plantLogin,
     [](const Call& c) { ZETSettings::setLoginData(L"operator@example", varied(c), true, true, true); }, kSet, nullptr},
    {"removeLoginData", plantLogin,
     [](const Call&) { ZETSettings::removeLoginData(); }, kSet, [](const Call&) { plantLogin(1); }},
    // The parameter table, in each of the three modes.
    {"LoadFromRegistry_mode0", plantParameterSources<0>, [](const Call&) { loadParameters(); }, kSet, nullptr},
    {"LoadFromRegistry_mode1", plantParameterSources<1>, [](const Call&) { loadParameters(); }, kSet, nullptr},
    {"LoadFromRegistry_mode2", plantParameterSources<2>, [](const Call&) { loadParameters(); }, kSet, nullptr},
    // Network profiles.
    {"getNetworkSettings", plantProfiles,
     [](const Call& c) { keep(ZETSettings::getNetworkSettings(networkName(target(c)))); }, kSizedGet, nullptr},
    {"setNetworkSettings", plantProfiles,
     [](const Call& c) { ZETSettings::setNetworkSettings(networkName(target(c)), profileOf(target(c))); }, kSizedSet, nullptr},
    {"deleteNetworkSettings", plantProfiles,
     [](const Call& c) { keep(ZETSettings::deleteNetworkSettings(networkName(target(c)))); }, kSizedSet, restoreProfile},
    {"getNetworkSettingsKeys", plantProfiles,
     [](const Call&) { keep(ZETSettings::getNetworkSettingsKeys()); }, kSizedGet, nullptr},
    // User settings.
    {"getUserSettings", plantUsers,
     [](const Call& c) { keep(ZETSettings::getUserSettings(userName(target(c)))); }, kSizedGet, nullptr},
    {"setUserSettings", plantUsers,
     [](const Call& c) { ZETSettings::setUserSettings(userName(target(c)), userOf(static_cast<int>(c.iteration))); }, kSizedSet, nullptr},
    {"removeUserSettings", plantUsers,
     [](const Call& c) { ZETSettings::removeUserSettings(userName(target(c))); }, kSizedSet,
     [](const Call& c) { ZETSettings::setUserSettings(userName(target(c)), userOf(target(c))); }},
    {"loadUserSettings", plantUsers,
     [](const Call&) { ZETUserSettingsMap m; ZETSettingsTestAccess::loadUserSettings(m); keep(m.users.size()); }, kSizedGet, nullptr},
    {"saveUserSettings", plantUsers,
     [](const Call& c) { ZETUserSettingsMap m; fillUsers(m, c.entries); ZETSettingsTestAccess::saveUserSettings(m); }, kSizedSet, nullptr},
    // Fallback keys.
    {"getFallbackKeySettings", plantFallbackKeys,
     [](const Call&) { keep(ZETSettings::getFallbackKeySettings()); }, kSizedGet, nullptr},
    {"setFallbackKeySettings", plantFallbackKeys,
     [](const Call& c) { ZETSettings::setFallbackKeySettings(fallbackKeys(c.entries)); }, kSizedSet, nullptr},
    {"loadFallbackKeySettings", plantFallbackKeys,
     [](const Call&) { ser_map<ser_wstring, ZETFallbackKeySettings> m; ZETSettingsTestAccess::loadFallbackKeySettings(m); keep(m.size()); }, kSizedGet, nullptr},
    {"saveFallbackKeySettings", plantFallbackKeys, [](const Call& c) {
         ser_map<ser_wstring, ZETFallbackKeySettings> m;
         const auto keys = fallbackKeys(c.entries);
         for (const auto& entry : *keys) m.emplace(ser_wstring(entry.first), entry.second);
         ZETSettingsTestAccess::saveFallbackKeySettings(m); }, kSizedSet, nullptr},
    // Fallback database.
    {"getFallbackSettings", plantFallbackDatabase,
     [](const Call& c) { auto r = fallbackRecord(target(c), c.entries); keep(ZETSettings::getFallbackSettings(r->owner, r->network)); }, kSizedGet, nullptr},
    {"setFallbackSettings", plantFallbackDatabase,
     [](const Call& c) { ZETSettings::setFallbackSettings(fallbackRecord(target(c), c.entries)); }, kSizedSet | kRewritesAll, nullptr},
    {"removeFallbackSettings", plantFallbackDatabase,
     [](const Call& c) { auto r = fallbackRecord(target(c), c.entries); ZETSettings::removeFallbackSettings(r->owner, r->network); }, kSizedSet, restoreFallbackRecord},
    {"getListOfNetworks", plantFallbackDatabase,
     [](const Call& c) { keep(ZETSettings::getListOfNetworks(fallbackRecord(target(c), c.entries)->owner)); }, kSizedGet, nullptr},
    {"getListOfOwners", plantFallbackDatabase,
     [](const Call&) { keep(ZETSettings::getListOfOwners()); }, kSizedGet, nullptr},
    {"loadFallbackSettings", plantFallbackDatabase,
     [](const Call&) { ZETOwnerToNetworkMap m; ZETSettingsTestAccess::loadFallbackSettings(m); keep(m.owners.size()); }, kSizedGet, nullptr},
    {"saveFallbackSettings", plantFallbackDatabase, [](const Call& c) {
         ZETOwnerToNetworkMap m;
         for (int i = 0; i < c.entries; ++i) {
             auto record = fallbackRecord(i, c.entries);
             record->fallbackBytes2 = std::to_string(variedNumber(c));
             addToDatabase(m, *record);
         }
         ZETSettingsTestAccess::saveFallbackSettings(m); }, kSizedSet | kRewritesAll, nullptr},
    // The chooser.
    {"isChooserActive", plantChooser, [](const Call&) { keep(ZETSettings::isChooserActive()); }, kSizedGet, nullptr},
    {"setChooserActive", plantChooser,
     [](const Call& c) { ZETSettings::setChooserActive(c.iteration % 2 == 0); }, kSizedSet, nullptr},
    {"getChooserPreferredNets", plantChooser,
     [](const Call&) { keep(ZETSettings::getChooserPreferredNets()); }, kSizedGet, nullptr},
    {"updateChooserPreferredNets", plantChooser,
     [](const Call& c) { ZETSettings::updateChooserPreferredNets(preferredList(c.entries)); }, kSizedSet, nullptr},
    {"nextChooserPreferredNet", plantChooserWalk,
     [](const Call&) { bool w = false; keep(ZETSettings::nextChooserPreferredNet(false, w)); }, kSizedSet, nullptr},
    {"stopChooserAutoAssociate", plantChooser,
     [](const Call&) { ZETSettings::stopChooserAutoAssociate(); }, kSizedSet, nullptr},
    {"moveChooserPreferredNetToFront", plantChooser,
     [](const Call& c) { ZETSettings::moveChooserPreferredNetToFront(preferredOf(target(c))); }, kSizedSet, nullptr},
    {"deleteChooserPreferredNet", plantChooser,
     [](const Call& c) { ZETSettings::deleteChooserPreferredNet(preferredOf(target(c)).netName); }, kSizedSet, restorePreferred},
    // Alerts.
    {"isAlertNotificationEnabled", plantAlerts,
     [](const Call& c) { keep(ZETSettings::isAlertNotificationEnabled(target(c))); }, kSizedGet, nullptr},
    {"updateAlertNotificationState", plantAlerts,
     [](const Call& c) { ZETSettings::updateAlertNotificationState(target(c), c.iteration % 2 == 0); }, kSizedSet, nullptr},
    {"loadAlertSettings", plantAlerts,
     [](const Call&) { ZETAlertSettings s; ZETSettingsTestAccess::loadAlertSettings(s); keep(s.states.size()); }, kSizedGet, nullptr},
    {"saveAlertSettings", plantAlerts,
     [](const Call& c) { ZETAlertSettings s; fillAlerts(s, c.entries); ZETSettingsTestAccess::saveAlertSettings(s); }, kSizedSet, nullptr},
});

}  // namespace
