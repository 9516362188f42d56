#include "zetsettings/serial/ZETOwnerToNetworkMap.h"

const ZETSerMemberList& ZETOwnerToNetworkMap::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 9, {&owners});
    (void)built;
    return list;
}
