// LoadFromRegistry: the table against ConfiguratorSettings in each mode, and the two captions
// from system keys that the tests write.
#include <map>
#include <optional>

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/params/tests/ParamTestSupport.h"

namespace {

typedef std::map<std::wstring, int> Numbers;
typedef std::map<std::wstring, std::wstring> Texts;

const wchar_t kMode[] = L"ZET_CONFIGURATOR_REGISTRY_MODE";
const wchar_t kPanel[] = L"ZET_NETWORK_PANEL_CAPTION";
const wchar_t kAdapter[] = L"ZET_ADAPTER_CAPTION";
const wchar_t kMainTimeout[] = L"ZET_MAIN_WINDOW_TIMEOUT";
const wchar_t kEnable8021x[] = L"ZET_ENABLE_8021X_CTRL_ID";
const wchar_t kEapType[] = L"ZET_EAP_TYPE_CTRL_ID";
const wchar_t kForeign[] = L"ZET_NOT_A_PARAMETER";
const wchar_t kStoredRoots[] = L"\"Root A\", \"Root B\"";

const wchar_t kFolderKey[] = L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}";
const std::wstring kAdapterClassKey =
    L"System\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
const std::wstring kGuid = L"{1A2B3C4D-0000-1111-2222-333344445555}";

struct Family {
    Numbers numbers;
    Texts texts;
};

// Every value of ConfiguratorSettings as stored, numbers and texts apart.
Family storedFamily()
{
    Family family;
    const JetByteTools::CRegistryKey key(HKEY_LOCAL_MACHINE, L"Software\\Orvane\\QXL\\ConfiguratorSettings", KEY_READ);
    for (auto it = key.BeginValueIteration(); it != key.EndValueIteration(); ++it) {
        const JetByteTools::CRegistryKey::Value value = key.QueryValue(it.GetName().c_str());
        if (value.Type() == REG_DWORD)
            family.numbers[it.GetName()] = static_cast<int>(value.AsDWORD());
        else
            family.texts[it.GetName()] = value.AsString();
    }
    return family;
}

class RegistryLoadTest : public zettest::RegistryTest {
protected:
    void SetUp() override
    {
        // Natively the machine runs XP SP2, so that the table is full; Wine runs its default
        // version, of class Other. Every key the tests change is in both tables.
        if (zettest::TestRegistry::isPortable()) {
            rawreg::writeText(kWindowsVersionKey, L"CurrentVersion", L"5.1");
            rawreg::writeText(kWindowsVersionKey, L"CSDVersion", L"Service Pack 2");
        }
        table.InitializeDefaults();
        // The system names the adapter's connection in its own language.
        rawreg::writeText(kAdapterClassKey + kGuid + L"\\Connection", L"Name", L"WLAN 7");
    }

    ZETConfigParam table;
};

class RegistryModeTest : public RegistryLoadTest, public ::testing::WithParamInterface<std::optional<int>> {};

TEST_P(RegistryModeTest, TheTableFollowsTheModeAndTheCaptionsComeFromTheSystem)
{
    const std::optional<int> mode = GetParam();
    if (mode)
        ZETSettings::intSetConfiguratorValue(kMode, *mode);
    // Someone else's values: changed ones, ones that read as nothing stored (-1 and the empty
    // text; 0 is an identifier), and one that is no parameter.
    Family planted = {{{kMainTimeout, 99}, {kEnable8021x, 0}, {kEapType, -1}, {kForeign, 5}},
                      {{kServerKey, L""}, {kRootList, kStoredRoots}}};
    for (const auto& value : planted.numbers)
        ZETSettings::intSetConfiguratorValue(value.first, value.second);
    for (const auto& value : planted.texts)
        ZETSettings::strSetConfiguratorValue(value.first, value.second);
    // And the connections folder.
    rawreg::writeText(kFolderKey, L"", L"Netzwerkverbindungen");

    ZETConfigParam param(table);
    param.LoadFromRegistry(L"\\Device\\" + kGuid);

    // Mode 1 takes what is stored; modes 0 and 1 then leave the family holding the object's
    // values, the mode (0 for a first load) and the foreign value; any other mode touches nothing.
    Numbers numbers = Access::numbers(table);
    Texts texts = Access::texts(table);
    if (mode == 1) {
        numbers[kMainTimeout] = 99;
        numbers[kEnable8021x] = 0;
        texts[kRootList] = kStoredRoots;
    }
    Family expected = planted;
    if (!mode || *mode == 0 || *mode == 1)
        expected = {numbers, texts};
    expected.numbers[kMode] = mode.value_or(0);
    expected.numbers[kForeign] = 5;
    const Family stored = storedFamily();
    EXPECT_EQ(expected.numbers, stored.numbers);
    EXPECT_EQ(expected.texts, stored.texts);

    // The captions go to the object only, after the mirror.
    texts[kPanel] = L"Netzwerkverbindungen";
    texts[kAdapter] = L"WLAN 7";
    EXPECT_EQ(numbers, Access::numbers(param));
    EXPECT_EQ(texts, Access::texts(param));

    // Only the object's own entries are walked; the captions are made where there are none.
    ZETConfigParam empty;
    empty.LoadFromRegistry(kGuid);
    EXPECT_TRUE(Access::numbers(empty).empty());
    EXPECT_EQ((Texts{{kAdapter, L"WLAN 7"}, {kPanel, L"Netzwerkverbindungen"}}), Access::texts(empty));
}

INSTANTIATE_TEST_SUITE_P(Modes, RegistryModeTest, ::testing::Values(std::nullopt, 0, 1, 2, -7),
                         [](const ::testing::TestParamInfo<std::optional<int>>& info) {
                             return info.param ? "Mode" + std::to_string(DWORD(*info.param)) : std::string("FirstLoad");
                         });

TEST_F(RegistryLoadTest, AnArgumentThatNamesNoAdaptersConnectionLeavesTheCaptionAsItWas)
{
    ZETSettings::intSetConfiguratorValue(kMode, 2);  // no mirror: only the captions are at stake
    const std::wstring noConnection = L"{99999999-0000-1111-2222-333344445555}";
    const std::wstring noName = L"{88888888-0000-1111-2222-333344445555}";
    rawreg::writeText(kAdapterClassKey + noConnection + L"\\Ndi", L"Service", L"tcpip");
    rawreg::writeText(kAdapterClassKey + noName + L"\\Connection", L"PnpInstanceID", L"PCI\\VEN_1");
    Access::texts(table)[kAdapter] = L"Caption before";
    const std::wstring arguments[] = {
        L"\\Device\\" + kGuid + L"x",               // more after the closing brace
        L"x{junk}" + kGuid,                         // the cut starts at the first brace
        L"{1a2b3c4d-0000-1111-2222-333344445555}",  // names compare with their case
        L"no brace",                                // the cut throws, and is caught
        noConnection,
        noName,
    };
    for (const std::wstring& argument : arguments) {
        ZETConfigParam param(table);
        param.LoadFromRegistry(argument);
        EXPECT_EQ(L"Caption before", param.getAdapterCaption()) << std::string(argument.begin(), argument.end());
        // Without the connections folder's key the panel caption stays the table's.
        EXPECT_EQ(table.getNetworkPanelCaption(), param.getNetworkPanelCaption());
    }
}

}  // namespace
