// The on/off state of each alert that has been looked at or changed: the key is the
// alert's number with the bits of the caller's int (so -1 is 4294967295 and sorts last), the
// value 1 for enabled and 0 for disabled. Any other value read stays as it is. Default
// constructor only.
//
// Wire form: states, the entry count then key and value in ascending unsigned key order.
#ifndef ZETSETTINGS_SERIAL_ZETALERTSETTINGS_H
#define ZETSETTINGS_SERIAL_ZETALERTSETTINGS_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_map.h"

class ZETAlertSettings final : public ZETSerializeClass {
public:
    ZETAlertSettings() = default;
    ZETAlertSettings(const ZETAlertSettings&) = delete;
    ZETAlertSettings& operator=(const ZETAlertSettings&) = delete;
    ~ZETAlertSettings() = default;

    // Class number 15; its 1 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_map<TSerVar<unsigned int>, TSerVar<unsigned int>> states;
};

#endif
