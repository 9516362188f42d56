// Built by scripts/test-install.sh with nothing but `pkg-config --cflags --libs zetsettings`:
// stores a value through the installed library and reads it back from a fresh call.
#include <iostream>
#include <string>

#include <zetsettings/ZETSettings.h>

int main()
{
    ZETSettings::strSetZetGuardValue(L"Mode", L"strict");
    const std::wstring mode = ZETSettings::strGetZetGuardValue(L"Mode", L"unset", false);
    ZETSettings::intSetNetlibValue(L"Retries", 7);
    const int retries = ZETSettings::intGetNetlibValue(L"Retries", 3);
    std::wcout << L"Mode=" << mode << L" Retries=" << retries << std::endl;
    return mode == L"strict" && retries == 7 ? 0 : 1;
}
