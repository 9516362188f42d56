// Construction, the defaults, table lookup, the version queries and the root certificate list.
#include "zetsettings/ZETConfigParam.h"

#include <cstring>

#include "zetsettings/components/ZETMiscUtil.h"
#include "zetsettings/params/ParameterDefaults.h"
#include "zetsettings/params/ParameterKeys.h"

namespace {

static_assert(sizeof(OSVERSIONINFOEXW) == 284, "the version record has Windows' layout");

zet::params::VersionClass versionClassOf(const ZETConfigParam& param)
{
    if (param.isWindows2000())
        return zet::params::kWindows2000;
    if (param.isWindowsXPSP2())
        return zet::params::kWindowsXPSP2;
    if (param.isWindowsXP())
        return zet::params::kWindowsXP;
    return zet::params::kOtherVersion;
}

}  // namespace

// The record is zeroed rather than left indeterminate, so that copying an object that never had
// InitializeDefaults copies defined bytes.
ZETConfigParam::ZETConfigParam() : m_osVersion() {}

ZETConfigParam::ZETConfigParam(const ZETConfigParam& other) = default;

ZETConfigParam& ZETConfigParam::operator=(const ZETConfigParam& other) = default;

ZETConfigParam::~ZETConfigParam() = default;

void ZETConfigParam::InitializeDefaults()
{
    std::memset(&m_osVersion, 0, sizeof(m_osVersion));
    m_osVersion.dwOSVersionInfoSize = sizeof(m_osVersion);
    // On failure the record stays zero, which reads as a version of class Other.
    GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&m_osVersion));
    zet::params::setDefaults(versionClassOf(*this), m_configStrings, m_configInts);
}

int ZETConfigParam::getConfigInt(const std::wstring& key) const
{
    const std::map<std::wstring, int>::const_iterator found = m_configInts.find(key);
    return found == m_configInts.end() ? 0 : found->second;
}

const std::wstring& ZETConfigParam::getConfigString(const std::wstring& key) const
{
    // One empty string for every object, alive as long as the library: callers may hold the
    // reference past the object.
    static const std::wstring empty;
    const std::map<std::wstring, std::wstring>::const_iterator found = m_configStrings.find(key);
    return found == m_configStrings.end() ? empty : found->second;
}

bool ZETConfigParam::isWindows2000() const
{
    return m_osVersion.dwMajorVersion == 5 && m_osVersion.dwMinorVersion == 0;
}

bool ZETConfigParam::isWindowsXP() const
{
    return m_osVersion.dwMajorVersion == 5 && m_osVersion.dwMinorVersion == 1;
}

bool ZETConfigParam::isWindowsXPSP2() const
{
    return isWindowsXP() && m_osVersion.wServicePackMajor == 2;
}

std::vector<std::wstring> ZETConfigParam::getListOfRootCertToCheck() const
{
    // Splitting at the quote gives, by turns, what stood between names and the names
    // themselves; a name may hold commas and blanks, a gap only blanks and one comma.
    std::vector<std::wstring> pieces =
        ZETMiscUtil::split(getConfigString(zet::params::kListOfRootCertToCheck), std::wstring(1, L'"'));
    ZETMiscUtil::trim(pieces, L' ');
    ZETMiscUtil::trimone(pieces, L',');

    std::vector<std::wstring> names;
    for (const std::wstring& piece : pieces) {
        if (!piece.empty() && piece != L",")
            names.push_back(piece);
    }
    return names;
}
