// checkNdisStackingOrder: the NDIS filter class failover has to stand last in FilterClasses.
// This one check goes to the registry functions directly and reports no registry failure.
#include "zetsettings/ZETSettings.h"

#include <vector>

#include "zetsettings/components/ZETMiscUtil.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/platform/RegistryData.h"

namespace {

const wchar_t kNetworkControlKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Network";
const wchar_t kFilterClasses[] = L"FilterClasses";
const wchar_t kFailover[] = L"failover";

// Closes the key on every way out, an exception of the utility component included.
class OpenedKey {
public:
    OpenedKey() : m_key(0) {}
    ~OpenedKey()
    {
        if (m_key)
            RegCloseKey(m_key);
    }
    OpenedKey(const OpenedKey&) = delete;
    OpenedKey& operator=(const OpenedKey&) = delete;

    HKEY* receiver() { return &m_key; }
    HKEY get() const { return m_key; }

private:
    HKEY m_key;
};

// The class is named in any case spelling.
bool isFailover(std::wstring entry)
{
    ZETMiscUtil::toLower(entry);
    return entry == kFailover;
}

// The text of FilterClasses, whatever type it has: its data as UTF-16, NULs included. False
// when it can't be read.
bool readFilterClasses(HKEY key, std::wstring& text)
{
    DWORD size = 0;
    if (RegQueryValueExW(key, kFilterClasses, 0, 0, 0, &size) != ERROR_SUCCESS)
        return false;
    std::vector<BYTE> data(size);
    // The type only tells the seam how the data came out; every type is read as text.
    DWORD type = REG_NONE;
    if (RegQueryValueExW(key, kFilterClasses, 0, &type, data.data(), &size) != ERROR_SUCCESS)
        return false;
    text = zet::platform::wideTextOfRegistryData(type, data.data(), size);
    return true;
}

// The entries of a multi-string: every NUL at either end goes first, so that extra
// terminators do not count as empty entries.
std::vector<std::wstring> entriesOf(const std::wstring& text, const std::wstring& delimiter)
{
    return ZETMiscUtil::split(ZETMiscUtil::trim(text, L'\0'), delimiter);
}

// Every occurrence of the class drops out wherever it stood, and it comes back last. The
// delimiter as a last entry gives the multi-string its closing pair of NULs when joined.
void writeWithFailoverLast(HKEY key, const std::vector<std::wstring>& entries, const std::wstring& delimiter)
{
    std::vector<std::wstring> reordered;
    for (const std::wstring& entry : entries) {
        if (!isFailover(entry))
            reordered.push_back(entry);
    }
    reordered.push_back(kFailover);
    reordered.push_back(delimiter);
    const std::wstring joined = ZETMiscUtil::join(reordered, delimiter);
    // A refused write goes unreported: the caller hears only that the order was wrong.
    RegSetValueExW(key, kFilterClasses, 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(joined.data()),
                   static_cast<DWORD>(joined.size() * sizeof(wchar_t)));
}

}  // namespace

bool ZETSettings::checkNdisStackingOrder()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    const std::wstring delimiter(1, L'\0');

    OpenedKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kNetworkControlKey, 0, KEY_ALL_ACCESS, key.receiver()) != ERROR_SUCCESS)
        return true;
    std::wstring text;
    if (!readFilterClasses(key.get(), text))
        return true;

    const std::vector<std::wstring> entries = entriesOf(text, delimiter);
    if (!entries.empty() && isFailover(entries.back()))
        return true;
    writeWithFailoverLast(key.get(), entries, delimiter);
    return false;
}
