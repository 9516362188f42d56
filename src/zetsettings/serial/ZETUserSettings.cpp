#include "zetsettings/serial/ZETUserSettings.h"

const ZETSerMemberList& ZETUserSettings::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 1, {&userText, &userBytes});
    (void)built;
    return list;
}
