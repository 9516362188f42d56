#include "zetsettings/serial/ZETNetworkSettings.h"

const ZETSerMemberList& ZETNetworkSettings::getMemberList() const
{
    static ZETSerMemberList list;
    static const bool built = buildMemberList(list, 3, {&profileText, &profileFlag1, &profileFlag2, &profileFlag3, &profileFlag4, &protectedBlob, &plainBlob});
    (void)built;
    return list;
}
