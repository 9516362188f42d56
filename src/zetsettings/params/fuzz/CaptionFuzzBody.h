// What the caption fuzz target does with one input, shared with the test that replays the
// kept inputs. The input's first byte picks the value (even: the network connections folder's
// name, odd: the adapter's connection name); the rest is planted as that value (see
// RegistryValueInput.h), and LoadFromRegistry runs. A text value must arrive whole, up to its
// first NUL, as the caption; other types must only not crash it.
//
// The registry mode is set to mirror nothing, so that a load reads the mode and the two
// captions and writes nothing: the table's mirror has tests of its own.
#ifndef ZETSETTINGS_PARAMS_FUZZ_CAPTIONFUZZBODY_H
#define ZETSETTINGS_PARAMS_FUZZ_CAPTIONFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/store/fuzz/RegistryValueInput.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace zetfuzz {

const wchar_t kFolderKey[] = L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}";
const wchar_t kConnectionKey[] = L"System\\CurrentControlSet\\Control\\Network\\"
                                 L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
                                 L"{1A2B3C4D-0000-1111-2222-333344445555}\\Connection";
const wchar_t kAdapterId[] = L"\\Device\\{1A2B3C4D-0000-1111-2222-333344445555}";
const int kMirrorNothing = 2;

inline void prepareCaptionStore()
{
    ZETSettings::intSetConfiguratorValue(L"ZET_CONFIGURATOR_REGISTRY_MODE", kMirrorNothing);
}

inline std::string runCaptionLoad(const uint8_t* data, std::size_t size)
{
    const bool adapter = size > 0 && (data[0] & 1);
    const RegistryValueInput input = registryValueOf(data + (size > 0), size - (size > 0));
    const LSTATUS planted = adapter ? rawreg::write(kConnectionKey, L"Name", input.type, input.callerBytes.data(),
                                                    static_cast<DWORD>(input.callerBytes.size()))
                                    : rawreg::write(kFolderKey, L"", input.type, input.callerBytes.data(),
                                                    static_cast<DWORD>(input.callerBytes.size()));
    if (planted != ERROR_SUCCESS)
        return "the caption's value could not be planted";

    ZETConfigParam param;
    param.InitializeDefaults();
    param.LoadFromRegistry(kAdapterId);
    const std::wstring& caption = adapter ? param.getAdapterCaption() : param.getNetworkPanelCaption();
    if ((input.type == REG_SZ || input.type == REG_EXPAND_SZ) && caption != input.text)
        return "a text value did not arrive whole as the caption";
    return std::string();
}

}  // namespace zetfuzz

#endif
