#include "zetsettings/serial/ZETFallbackSettings.h"

const ZETSerMemberList& ZETFallbackSettings::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 5, {&owner, &network, &fallbackBytes1, &fallbackBytes2});
    (void)built;
    return list;
}
