// Machine-scope data protection: any process of this machine that may use the store can
// decrypt what another encrypted; a copy of the store alone can't. Failure of either
// direction gives an empty buffer, never an exception of its own.
#ifndef ZETSETTINGS_COMPONENTS_ZETPROTECTDATA_H
#define ZETSETTINGS_COMPONENTS_ZETPROTECTDATA_H

#include "zetsettings/components/ZETBuf.h"

class ZETProtectData {
public:
    // extra, when not empty, must be given again to decrypt.
    ZETBuf encryptData(const ZETBuf& data, const ZETBuf& extra);
    ZETBuf decryptData(const ZETBuf& data, const ZETBuf& extra);
};

#endif
