// One record of the fallback database, for one owner and one network, stored in the clear.
// The library reads owner and network; the two byte strings are carried for callers.
//
// Wire form, in this order: owner, network, fallbackBytes1, fallbackBytes2.
#ifndef ZETSETTINGS_SERIAL_ZETFALLBACKSETTINGS_H
#define ZETSETTINGS_SERIAL_ZETFALLBACKSETTINGS_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/components/ser_string.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETFallbackSettings final : public ZETSerializeClass {
public:
    ZETFallbackSettings() = default;
    ZETFallbackSettings(const ZETFallbackSettings& other) = default;
    ZETFallbackSettings& operator=(const ZETFallbackSettings& other) = default;
    ~ZETFallbackSettings() = default;

    // Class number 5; its 4 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring owner;
    ser_wstring network;
    ser_string fallbackBytes1;
    ser_string fallbackBytes2;
};

#endif
