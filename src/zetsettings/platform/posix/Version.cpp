// GetVersionExW reports the Windows version that the emulated machine is set to, as Windows
// records it in HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion of the store:
// "CurrentVersion" ("major.minor"), "CSDVersion" ("Service Pack N") and "CurrentBuildNumber".
// Without a readable "CurrentVersion" it reports 6.2 build 9200, which is what Windows itself
// tells programs that don't declare a newer one.
#include <algorithm>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/WideText.h"

namespace {

const WCHAR kVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
const WCHAR kServicePackPrefix[] = L"Service Pack ";

struct ReportedVersion {
    DWORD major = 6;
    DWORD minor = 2;
    DWORD build = 9200;
    std::wstring servicePack;
    WORD servicePackMajor = 0;
};

bool readText(HKEY key, const WCHAR* name, std::wstring& text)
{
    DWORD type = 0;
    DWORD bytes = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
        return false;
    std::vector<WCHAR> buffer(bytes / sizeof(WCHAR) + 1, 0);
    if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<LPBYTE>(buffer.data()), &bytes) !=
        ERROR_SUCCESS)
        return false;
    buffer[std::min<std::size_t>(bytes / sizeof(WCHAR), buffer.size() - 1)] = 0;
    text = buffer.data();
    return true;
}

// Decimal digits from `at` on, at least one, into `value`; false on overflow or no digit.
bool parseNumber(const std::wstring& text, std::size_t& at, DWORD& value)
{
    const std::size_t start = at;
    unsigned long long number = 0;
    while (at < text.size() && text[at] >= L'0' && text[at] <= L'9') {
        number = number * 10 + static_cast<unsigned>(text[at] - L'0');
        if (number > 0xFFFFFFFFull)
            return false;
        ++at;
    }
    value = static_cast<DWORD>(number);
    return at > start;
}

bool parseWhole(const std::wstring& text, DWORD& value)
{
    std::size_t at = 0;
    return parseNumber(text, at, value) && at == text.size();
}

bool parseMajorMinor(const std::wstring& text, DWORD& major, DWORD& minor)
{
    std::size_t at = 0;
    if (!parseNumber(text, at, major) || at >= text.size() || text[at] != L'.')
        return false;
    ++at;
    return parseNumber(text, at, minor) && at == text.size();
}

WORD servicePackNumber(const std::wstring& text)
{
    const std::wstring prefix = kServicePackPrefix;
    if (text.compare(0, prefix.size(), prefix) != 0)
        return 0;
    std::size_t at = prefix.size();
    DWORD number = 0;
    if (!parseNumber(text, at, number) || number > 0xFFFF)
        return 0;
    return static_cast<WORD>(number);
}

ReportedVersion readFrom(HKEY key)
{
    ReportedVersion version;
    std::wstring text;
    DWORD major = 0;
    DWORD minor = 0;
    if (!readText(key, L"CurrentVersion", text) || !parseMajorMinor(text, major, minor))
        return version;
    version.major = major;
    version.minor = minor;
    version.build = 0;
    if (readText(key, L"CurrentBuildNumber", text) && !parseWhole(text, version.build))
        version.build = 0;
    if (readText(key, L"CSDVersion", text)) {
        version.servicePack = text;
        version.servicePackMajor = servicePackNumber(text);
    }
    return version;
}

ReportedVersion readReportedVersion()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kVersionKey, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return ReportedVersion();
    const ReportedVersion version = readFrom(key);
    RegCloseKey(key);
    return version;
}

void fillBasic(const ReportedVersion& version, OSVERSIONINFOW& info)
{
    info.dwMajorVersion = version.major;
    info.dwMinorVersion = version.minor;
    info.dwBuildNumber = version.build;
    info.dwPlatformId = VER_PLATFORM_WIN32_NT;
    const std::u16string servicePack = zet::portable::registry::WideText::toUtf16(version.servicePack.c_str());
    const std::size_t room = sizeof(info.szCSDVersion) / sizeof(info.szCSDVersion[0]) - 1;
    std::memset(info.szCSDVersion, 0, sizeof(info.szCSDVersion));
    std::copy_n(servicePack.begin(), std::min(servicePack.size(), room), info.szCSDVersion);
}

void fillExtended(const ReportedVersion& version, OSVERSIONINFOEXW& info)
{
    info.wServicePackMajor = version.servicePackMajor;
    info.wServicePackMinor = 0;
    info.wSuiteMask = 0;
    info.wProductType = VER_NT_WORKSTATION;
    info.wReserved = 0;
}

}  // namespace

extern "C" {

BOOL GetVersionExW(LPOSVERSIONINFOW lpVersionInformation)
{
    if (!lpVersionInformation) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const DWORD size = lpVersionInformation->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    try {
        const ReportedVersion version = readReportedVersion();
        fillBasic(version, *lpVersionInformation);
        if (size == sizeof(OSVERSIONINFOEXW))
            fillExtended(version, *reinterpret_cast<OSVERSIONINFOEXW*>(lpVersionInformation));
        return TRUE;
    } catch (const std::exception&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
}

}  // extern "C"
