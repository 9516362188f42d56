#include "zetsettings/serial/ZETPreferredNetworks.h"

const ZETSerMemberList& ZETPreferredNetworks::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 14, {&position, &entries});
    (void)built;
    return list;
}
