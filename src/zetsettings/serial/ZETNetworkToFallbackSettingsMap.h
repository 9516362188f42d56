// One owner's part of the fallback database in memory: the owner and its records keyed by
// network name. Keys and the records' own names are kept in step by the store, not by the
// wire. Copied deeply as the value of ZETOwnerToNetworkMap; not assigned.
//
// Wire form, in this order: owner, networks (the count, then key and record per entry).
#ifndef ZETSETTINGS_SERIAL_ZETNETWORKTOFALLBACKSETTINGSMAP_H
#define ZETSETTINGS_SERIAL_ZETNETWORKTOFALLBACKSETTINGSMAP_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/ZETFallbackSettings.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETNetworkToFallbackSettingsMap final : public ZETSerializeClass {
public:
    ZETNetworkToFallbackSettingsMap() = default;
    ZETNetworkToFallbackSettingsMap(const ZETNetworkToFallbackSettingsMap& other) = default;
    ZETNetworkToFallbackSettingsMap& operator=(const ZETNetworkToFallbackSettingsMap&) = delete;
    ~ZETNetworkToFallbackSettingsMap() = default;

    // Class number 6; its 2 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring owner;
    ser_map<ser_wstring, ZETFallbackSettings> networks;
};

#endif
