// One profile per wireless network. The library reads only protectedBlob, which the store
// encrypts on its way to the registry; the other members are carried for callers, every flag
// value included. Built with the default constructor only and held by boost::shared_ptr:
// never copied or assigned.
//
// Wire form, in this order: profileText, the four flag bytes, protectedBlob, plainBlob.
#ifndef ZETSETTINGS_SERIAL_ZETNETWORKSETTINGS_H
#define ZETSETTINGS_SERIAL_ZETNETWORKSETTINGS_H

#include "zetsettings/components/ZETBuf.h"
#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETNetworkSettings final : public ZETSerializeClass {
public:
    ZETNetworkSettings() = default;
    ZETNetworkSettings(const ZETNetworkSettings&) = delete;
    ZETNetworkSettings& operator=(const ZETNetworkSettings&) = delete;
    ~ZETNetworkSettings() = default;

    // Class number 3; its 7 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring profileText;
    TSerVar<unsigned char> profileFlag1;
    TSerVar<unsigned char> profileFlag2;
    TSerVar<unsigned char> profileFlag3;
    TSerVar<unsigned char> profileFlag4;
    ZETBuf protectedBlob;
    ZETBuf plainBlob;
};

#endif
