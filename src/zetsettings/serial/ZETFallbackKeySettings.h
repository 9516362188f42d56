// An entry of the machine's set of fallback keys, which is stored as a
// ser_map<ser_wstring, ZETFallbackKeySettings> with no record around it, encrypted whole. All
// members are carried for callers. Copied each time it enters or leaves a map; not assigned.
//
// Wire form, in this order: keyText1, keyText2, keyBytes.
#ifndef ZETSETTINGS_SERIAL_ZETFALLBACKKEYSETTINGS_H
#define ZETSETTINGS_SERIAL_ZETFALLBACKKEYSETTINGS_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/components/ser_string.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETFallbackKeySettings final : public ZETSerializeClass {
public:
    ZETFallbackKeySettings() = default;
    ZETFallbackKeySettings(const ZETFallbackKeySettings& other) = default;
    ZETFallbackKeySettings& operator=(const ZETFallbackKeySettings&) = delete;
    ~ZETFallbackKeySettings() = default;

    // Class number 7; its 3 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring keyText1;
    ser_wstring keyText2;
    ser_string keyBytes;
};

#endif
