// A look inside ZETConfigParam for its tests.
#ifndef ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H
#define ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H

#include <map>
#include <string>

#include "zetsettings/ZETConfigParam.h"

struct ZETConfigParamTestAccess {
    static std::map<std::wstring, std::wstring>& texts(ZETConfigParam& param) { return param.m_configStrings; }
    static std::map<std::wstring, int>& numbers(ZETConfigParam& param) { return param.m_configInts; }
    static OSVERSIONINFOEXW& version(ZETConfigParam& param) { return param.m_osVersion; }
};

// Where Windows records its version, which the portable layer reports.
const wchar_t kWindowsVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

#endif
