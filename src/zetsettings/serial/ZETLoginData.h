// The machine's one stored login, encrypted whole by the store. The store keeps each flag at
// 0 or 1 and password empty unless keepPassword is 1, but a read keeps whatever bytes stand
// there. Never leaves the store: default constructor only.
//
// Wire form, in this order: userName, password, loginEnabled, keepPassword, dependentFlag.
// A login without password still writes password, as four zero bytes.
#ifndef ZETSETTINGS_SERIAL_ZETLOGINDATA_H
#define ZETSETTINGS_SERIAL_ZETLOGINDATA_H

#include "zetsettings/components/ZETSerializeClass.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETLoginData final : public ZETSerializeClass {
public:
    ZETLoginData() = default;
    ZETLoginData(const ZETLoginData&) = delete;
    ZETLoginData& operator=(const ZETLoginData&) = delete;
    ~ZETLoginData() = default;

    // Class number 10; its 5 members in wire order.
    const ZETSerMemberList& getMemberList() const override;

    ser_wstring userName;
    ser_wstring password;
    TSerVar<unsigned char> loginEnabled;
    TSerVar<unsigned char> keepPassword;
    TSerVar<unsigned char> dependentFlag;
};

#endif
