#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"

const ZETSerMemberList& ZETNetworkToFallbackSettingsMap::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 6, {&owner, &networks});
    (void)built;
    return list;
}
