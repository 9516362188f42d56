// What the NDIS check fuzz target does with one input, shared with the test that replays the
// kept inputs. The input is planted as FilterClasses (see RegistryValueInput.h); then the
// check runs. A list found right is left byte for byte as it was; a list found wrong is
// rewritten as a multi-string that ends in "failover", which a second check finds right.
#ifndef ZETSETTINGS_STORE_FUZZ_NDISFUZZBODY_H
#define ZETSETTINGS_STORE_FUZZ_NDISFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/store/fuzz/RegistryValueInput.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace zetfuzz {

const wchar_t kNdisNetworkKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Network";
const wchar_t kNdisFilterClasses[] = L"FilterClasses";

inline bool endsInFailover(const rawreg::RawValue& value)
{
    static const wchar_t kEnd[] = L"failover\0";  // and the array's own NUL: two in all
    const std::size_t endBytes = sizeof(kEnd);
    return value.data.size() >= endBytes &&
           std::memcmp(value.data.data() + value.data.size() - endBytes, kEnd, endBytes) == 0;
}

inline std::string runNdisCheck(const uint8_t* data, std::size_t size)
{
    const RegistryValueInput input = registryValueOf(data, size);
    if (rawreg::write(kNdisNetworkKey, kNdisFilterClasses, input.type, input.callerBytes.data(),
                      static_cast<DWORD>(input.callerBytes.size())) != ERROR_SUCCESS)
        return "FilterClasses could not be planted";
    const rawreg::RawValue before = rawreg::read(kNdisNetworkKey, kNdisFilterClasses);
    const bool foundRight = ZETSettings::checkNdisStackingOrder();
    const rawreg::RawValue after = rawreg::read(kNdisNetworkKey, kNdisFilterClasses);
    if (foundRight)
        return after.type == before.type && after.data == before.data ? std::string()
                                                                      : "a list found right was changed";
    if (after.type != REG_MULTI_SZ || !endsInFailover(after))
        return "a rewritten list is no multi-string ending in failover";
    if (!ZETSettings::checkNdisStackingOrder())
        return "a rewritten list was found wrong again";
    return std::string();
}

}  // namespace zetfuzz

#endif
