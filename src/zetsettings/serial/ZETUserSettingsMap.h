// All users' settings, keyed by user name (lower case as the store writes them; the bytes
// are read as they stand). A local object of one store operation: default constructor only.
//
// Wire form: users, the entry count then key and record in ascending key order.
#ifndef ZETSETTINGS_SERIAL_ZETUSERSETTINGSMAP_H
#define ZETSETTINGS_SERIAL_ZETUSERSETTINGSMAP_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/ZETUserSettings.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETUserSettingsMap final : public ZETSerializeClass {
public:
    ZETUserSettingsMap() = default;
    ZETUserSettingsMap(const ZETUserSettingsMap&) = delete;
    ZETUserSettingsMap& operator=(const ZETUserSettingsMap&) = delete;
    ~ZETUserSettingsMap() = default;

    // Class number 2; its 1 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_map<ser_wstring, ZETUserSettings> users;
};

#endif
