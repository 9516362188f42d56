// The whole fallback database in memory, keyed by owner. The store keeps it in registry keys,
// not as these bytes, but the form is complete. Default constructor only.
//
// Wire form: owners, the entry count then key and record in ascending key order.
#ifndef ZETSETTINGS_SERIAL_ZETOWNERTONETWORKMAP_H
#define ZETSETTINGS_SERIAL_ZETOWNERTONETWORKMAP_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETOwnerToNetworkMap final : public ZETSerializeClass {
public:
    ZETOwnerToNetworkMap() = default;
    ZETOwnerToNetworkMap(const ZETOwnerToNetworkMap&) = delete;
    ZETOwnerToNetworkMap& operator=(const ZETOwnerToNetworkMap&) = delete;
    ~ZETOwnerToNetworkMap() = default;

    // Class number 9; its 1 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_map<ser_wstring, ZETNetworkToFallbackSettingsMap> owners;
};

#endif
