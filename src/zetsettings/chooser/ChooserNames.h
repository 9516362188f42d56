// Where the chooser's flag, its preferred list and the alert states live: values of the key
// Settings below the base key, beside the ZetGuard family's own values.
#ifndef ZETSETTINGS_CHOOSER_CHOOSERNAMES_H
#define ZETSETTINGS_CHOOSER_CHOOSERNAMES_H

namespace zet {
namespace chooser {

const wchar_t kSettingsKey[] = L"Settings";
const wchar_t kActiveValue[] = L"ZET_NC_ACTIVE";
const wchar_t kPreferredNetworksValue[] = L"ZET_NC_PREFERRED_NETWORKS";
const wchar_t kAlertSettingsValue[] = L"ZET_ALERT_SETTINGS";

}  // namespace chooser
}  // namespace zet

#endif
