// What the NDIS check fuzz target does with one input, shared with the test that replays the
// kept inputs. The input is planted as FilterClasses (see RegistryValueInput.h); then the
// check runs. Whatever its type, the data is a list of UTF-16 entries: a list whose last entry
// is "failover" in any spelling is found right and left byte for byte as it was; any other is
// rewritten as the multi-string of its other entries, unchanged and in order, then "failover".
#ifndef ZETSETTINGS_STORE_FUZZ_NDISFUZZBODY_H
#define ZETSETTINGS_STORE_FUZZ_NDISFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETMiscUtil.h"
#include "zetsettings/serial/ZETUtf16.h"
#include "zetsettings/store/fuzz/RegistryValueInput.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace zetfuzz {

const wchar_t kNdisNetworkKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Network";
const wchar_t kNdisFilterClasses[] = L"FilterClasses";

inline bool isFailoverEntry(std::wstring entry)
{
    ZETMiscUtil::toLower(entry);
    return entry == L"failover";
}

// The non-empty runs between NULs of the stored data read as UTF-16, an odd last byte left out.
inline std::vector<std::wstring> ndisEntriesOf(const uint8_t* stored, std::size_t size)
{
    std::wstring text;
    ZETUtf16::decode(stored, size / 2, text);
    const std::size_t first = text.find_first_not_of(L'\0');
    const std::size_t last = text.find_last_not_of(L'\0');
    std::vector<std::wstring> entries;
    if (first == std::wstring::npos)
        return entries;
    std::size_t start = first;
    for (std::size_t end; (end = text.find(L'\0', start)) < last; start = end + 1)
        entries.push_back(text.substr(start, end - start));
    entries.push_back(text.substr(start, last + 1 - start));
    return entries;
}

// The rewritten list as the registry functions give a REG_MULTI_SZ: in wchar_t units.
inline std::vector<BYTE> ndisRewriteOf(const std::vector<std::wstring>& entries)
{
    std::wstring text;
    for (const std::wstring& entry : entries)
        if (!isFailoverEntry(entry))
            text += entry + L'\0';
    text += std::wstring(L"failover") + L'\0' + L'\0';
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}

inline std::string runNdisCheck(const uint8_t* data, std::size_t size)
{
    const RegistryValueInput input = registryValueOf(data, size);
    if (rawreg::write(kNdisNetworkKey, kNdisFilterClasses, input.type, input.callerBytes.data(),
                      static_cast<DWORD>(input.callerBytes.size())) != ERROR_SUCCESS)
        return "FilterClasses could not be planted";
    const std::vector<std::wstring> entries = size ? ndisEntriesOf(data + 1, size - 1) : ndisEntriesOf(data, 0);
    const bool right = !entries.empty() && isFailoverEntry(entries.back());
    const rawreg::RawValue before = rawreg::read(kNdisNetworkKey, kNdisFilterClasses);
    const bool foundRight = ZETSettings::checkNdisStackingOrder();
    const rawreg::RawValue after = rawreg::read(kNdisNetworkKey, kNdisFilterClasses);
    if (foundRight != right)
        return right ? "a list ending in failover was found wrong" : "a list not ending in failover was found right";
    if (foundRight)
        return after.type == before.type && after.data == before.data ? std::string()
                                                                      : "a list found right was changed";
    if (after.type != REG_MULTI_SZ || after.data != ndisRewriteOf(entries))
        return "a rewritten list is not its other entries followed by failover";
    if (!ZETSettings::checkNdisStackingOrder())
        return "a rewritten list was found wrong again";
    return std::string();
}

}  // namespace zetfuzz

#endif
