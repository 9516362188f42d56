#include "zetsettings/serial/ZETFallbackKeySettings.h"

const ZETSerMemberList& ZETFallbackKeySettings::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 7, {&keyText1, &keyText2, &keyBytes});
    (void)built;
    return list;
}
