#include "zetsettings/serial/ZETAlertSettings.h"

const ZETSerMemberList& ZETAlertSettings::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 15, {&states});
    (void)built;
    return list;
}
