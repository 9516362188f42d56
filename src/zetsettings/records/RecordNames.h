// Names of the record stores' values and keys on the base key, in one place.
#ifndef ZETSETTINGS_RECORDS_RECORDNAMES_H
#define ZETSETTINGS_RECORDS_RECORDNAMES_H

namespace zet {
namespace records {

// Protected values: binary, directly on the base key, encrypted whole.
const wchar_t kUserSettingsValue[] = L"UserSettings";
const wchar_t kLoginSettingsValue[] = L"LoginSettings";
const wchar_t kFallbackKeysValue[] = L"FallbackKeys";

// The fallback database: one subkey per owner below it, one clear value per network.
const wchar_t kFallbackDatabaseKey[] = L"FallbackDatabase";

}  // namespace records
}  // namespace zet

#endif
