#include "RegFile.h"

#include <cwctype>

#include "TextCodec.h"

namespace zetreg {

bool isTextType(uint32_t type)
{
    return type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
}

RegFileError::RegFileError(int line, const std::string& message)
    : std::runtime_error(line > 0 ? "line " + std::to_string(line) + ": " + message : message), m_line(line)
{
}

const std::vector<RegRoot>& knownRoots()
{
    // The roots that the machine's registry holds on every platform the tool runs on.
    static const std::vector<RegRoot> roots = {
        {L"HKEY_LOCAL_MACHINE", L"HKLM"},
        {L"HKEY_CURRENT_USER", L"HKCU"},
        {L"HKEY_CLASSES_ROOT", L"HKCR"},
        {L"HKEY_USERS", L"HKU"},
    };
    return roots;
}

namespace {

bool equalsIgnoringCase(const std::wstring& a, const wchar_t* b)
{
    std::size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
        if (std::towupper(a[i]) != std::towupper(b[i]))
            return false;
    return i == a.size() && !b[i];
}

}  // namespace

bool splitRootPath(const std::wstring& path, std::size_t& rootIndex, std::wstring& rest)
{
    const std::size_t slash = path.find(L'\\');
    const std::wstring head = path.substr(0, slash);
    const std::vector<RegRoot>& roots = knownRoots();
    for (std::size_t i = 0; i < roots.size(); ++i) {
        if (equalsIgnoringCase(head, roots[i].longName) || equalsIgnoringCase(head, roots[i].shortName)) {
            rootIndex = i;
            rest = slash == std::wstring::npos ? std::wstring() : path.substr(slash + 1);
            return true;
        }
    }
    return false;
}

std::string rootNamesForMessage()
{
    std::string names;
    for (const RegRoot& root : knownRoots()) {
        if (!names.empty())
            names += ", ";
        names += wideToUtf8(root.longName);
    }
    return names;
}

}  // namespace zetreg
