// One network of the chooser's preferred list. netName identifies it, and with it
// macAddress when matchKind is 3, or the two match bytes otherwise; entryFlag is carried for
// callers. Held by value in the list and handed out as copies.
//
// Wire form, in this order: netName, macAddress, entryFlag, matchKind, matchByte1, matchByte2.
#ifndef ZETSETTINGS_SERIAL_ZETPREFERREDNETENTRY_H
#define ZETSETTINGS_SERIAL_ZETPREFERREDNETENTRY_H

#include "zetsettings/components/ZETMacAddress.h"
#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETPreferredNetEntry final : public ZETSerializeClass {
public:
    ZETPreferredNetEntry() = default;
    ZETPreferredNetEntry(const ZETPreferredNetEntry& other) = default;
    ZETPreferredNetEntry& operator=(const ZETPreferredNetEntry& other) = default;
    ~ZETPreferredNetEntry() = default;

    // Class number 13; its 6 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring netName;
    ZETMacAddress macAddress;
    TSerVar<unsigned char> entryFlag;
    TSerVar<unsigned char> matchKind;
    TSerVar<unsigned char> matchByte1;
    TSerVar<unsigned char> matchByte2;
};

#endif
