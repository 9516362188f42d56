#include "zetsettings/serial/ZETLoginData.h"

const ZETSerMemberList& ZETLoginData::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 10, {&userName, &password, &loginEnabled, &keepPassword, &dependentFlag});
    (void)built;
    return list;
}
