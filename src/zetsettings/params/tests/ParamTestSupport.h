// A look inside ZETConfigParam for its tests, which start from the store's tests' support.
#ifndef ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H
#define ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H

#include <map>

#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/store/tests/StoreTestSupport.h"

struct ZETConfigParamTestAccess {
    static std::map<std::wstring, std::wstring>& texts(ZETConfigParam& param) { return param.m_configStrings; }
    static std::map<std::wstring, int>& numbers(ZETConfigParam& param) { return param.m_configInts; }
    static OSVERSIONINFOEXW& version(ZETConfigParam& param) { return param.m_osVersion; }
};
typedef ZETConfigParamTestAccess Access;

const wchar_t kRootList[] = L"ZET_LIST_OF_ROOT_CERT_TO_CHECK";
const wchar_t kServerKey[] = L"ZET_CONNECT_TO_THESE_SERVERS_STRING";

// Where Windows records its version, which the portable layer reports.
const wchar_t kWindowsVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

#endif
