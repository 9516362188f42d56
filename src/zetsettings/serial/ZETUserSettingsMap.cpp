#include "zetsettings/serial/ZETUserSettingsMap.h"

const ZETSerMemberList& ZETUserSettingsMap::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 2, {&users});
    (void)built;
    return list;
}
