// The table of parameter defaults, by version class of the running Windows.
#ifndef ZETSETTINGS_PARAMS_PARAMETERDEFAULTS_H
#define ZETSETTINGS_PARAMS_PARAMETERDEFAULTS_H

#include <map>
#include <string>

namespace zet {
namespace params {

// The dialogs differ between these; every other version (2003, Vista, ...) is Other.
enum VersionClass { kWindows2000, kWindowsXP, kWindowsXPSP2, kOtherVersion, kVersionClassCount };

// Sets each parameter that the class has a default for, overwriting what is there; keys the
// class has no default for are left alone.
void setDefaults(VersionClass versionClass, std::map<std::wstring, std::wstring>& texts,
                 std::map<std::wstring, int>& numbers);

}  // namespace params
}  // namespace zet

#endif
