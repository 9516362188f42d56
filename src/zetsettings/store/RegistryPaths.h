// Names of the store's keys and values below HKEY_LOCAL_MACHINE, in one place.
#ifndef ZETSETTINGS_STORE_REGISTRYPATHS_H
#define ZETSETTINGS_STORE_REGISTRYPATHS_H

namespace zet {
namespace paths {

const wchar_t kBaseKey[] = L"Software\\Orvane\\QXL";
const wchar_t kNetworkSettingsKey[] = L"NetworkSettings";

}  // namespace paths
}  // namespace zet

#endif
