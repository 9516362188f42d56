// The chooser's preferred list in order of preference, and position, the 1-based place of
// the entry last handed out (0: none). The store keeps position within the list after every
// load and before every store; the bytes themselves are read as they stand. Default
// constructor only.
//
// Wire form, in this order: position (one byte), entries (the count, then each entry).
#ifndef ZETSETTINGS_SERIAL_ZETPREFERREDNETWORKS_H
#define ZETSETTINGS_SERIAL_ZETPREFERREDNETWORKS_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ZETPreferredNetEntry.h"
#include "zetsettings/serial/ser_vector.h"

class ZETPreferredNetworks final : public ZETSerializeClass {
public:
    ZETPreferredNetworks() = default;
    ZETPreferredNetworks(const ZETPreferredNetworks&) = delete;
    ZETPreferredNetworks& operator=(const ZETPreferredNetworks&) = delete;
    ~ZETPreferredNetworks() = default;

    // Class number 14; its 2 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    TSerVar<unsigned char> position;
    ser_vector<ZETPreferredNetEntry> entries;
};

#endif
