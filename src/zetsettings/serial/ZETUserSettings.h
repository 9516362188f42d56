// One user's settings. The user's name is not here: it is the key of ZETUserSettingsMap.
// Both members are carried for callers.
//
// Wire form, in this order: userText, userBytes.
#ifndef ZETSETTINGS_SERIAL_ZETUSERSETTINGS_H
#define ZETSETTINGS_SERIAL_ZETUSERSETTINGS_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/components/ser_string.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETUserSettings final : public ZETSerializeClass {
public:
    ZETUserSettings() = default;
    ZETUserSettings(const ZETUserSettings& other) = default;
    ZETUserSettings& operator=(const ZETUserSettings& other) = default;
    ~ZETUserSettings() = default;

    // Class number 1; its 2 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring userText;
    ser_string userBytes;
};

#endif
