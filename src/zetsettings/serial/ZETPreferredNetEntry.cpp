#include "zetsettings/serial/ZETPreferredNetEntry.h"

const ZETSerMemberList& ZETPreferredNetEntry::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 13, {&netName, &macAddress, &entryFlag, &matchKind, &matchByte1, &matchByte2});
    (void)built;
    return list;
}
