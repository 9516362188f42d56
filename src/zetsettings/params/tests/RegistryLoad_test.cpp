// LoadFromRegistry: the table against ConfiguratorSettings in each mode, and the two captions
// from system keys that the tests write.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/params/tests/ParamTestSupport.h"

namespace
{

using paramtest::kModeName;
typedef ZETConfigParamTestAccess Access;

const wchar_t kPanel[] = L"ZET_NETWORK_PANEL_CAPTION";
const wchar_t kAdapter[] = L"ZET_ADAPTER_CAPTION";
const wchar_t kServer[] = L"ZET_CONNECT_TO_THESE_SERVERS_STRING";
const wchar_t kRootList[] = L"ZET_LIST_OF_ROOT_CERT_TO_CHECK";
const wchar_t kMainTimeout[] = L"ZET_MAIN_WINDOW_TIMEOUT";
const wchar_t kChildTimeout[] = L"ZET_CHILD_WINDOW_TIMEOUT";
const wchar_t kEnable8021x[] = L"ZET_ENABLE_8021X_CTRL_ID";
const wchar_t kEapType[] = L"ZET_EAP_TYPE_CTRL_ID";

const wchar_t kFolderKey[] = L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}";
const std::wstring kAdapterClassKey =
    L"System\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";

class RegistryLoadTest : public zettest::RegistryTest
{
protected:
    void SetUp() override
    {
        // The portable machine runs XP SP2 here, so that the table is full; Wine runs its
        // default version, of class Other.
        if (zettest::TestRegistry::isPortable())
            paramtest::setEmulatedVersion(L"5.1", L"Service Pack 2", L"2600");
        param.InitializeDefaults();
        tableTexts = Access::texts(param);
        tableNumbers = Access::numbers(param);
    }

    static void setMode(int mode) { ZETSettings::intSetConfiguratorValue(kModeName, mode); }

    ZETConfigParam param;
    std::map<std::wstring, std::wstring> tableTexts;
    std::map<std::wstring, int> tableNumbers;
};

TEST_F(RegistryLoadTest, TheFirstLoadStoresModeZeroAndTheWholeTable)
{
    param.LoadFromRegistry(L"{00000000-0000-0000-0000-000000000000}");

    const paramtest::StoredFamily family = paramtest::readConfiguratorFamily();
    std::map<std::wstring, int> expectedNumbers = tableNumbers;
    expectedNumbers[kModeName] = 0;
    EXPECT_EQ(expectedNumbers, family.numbers);
    EXPECT_EQ(tableTexts, family.texts);
    EXPECT_EQ(0, family.otherTypes);
    // Without the system keys the captions stay the table's.
    EXPECT_EQ(tableTexts, Access::texts(param));
    EXPECT_EQ(tableNumbers, Access::numbers(param));
    if (zettest::TestRegistry::isPortable()) {
        EXPECT_EQ(62u, family.texts.size() + family.numbers.size() - 1);
        EXPECT_EQ(L"Network Connections", family.texts.at(kPanel));
        EXPECT_EQ(L"Wireless Network Connection", family.texts.at(kAdapter));
    }
}

TEST_F(RegistryLoadTest, ModeZeroWritesTheTableOverChangedValues)
{
    setMode(0);
    ZETSettings::intSetConfiguratorValue(kMainTimeout, 99);
    ZETSettings::strSetConfiguratorValue(kServer, L"elsewhere.example");
    ZETSettings::intSetConfiguratorValue(L"ZET_NOT_A_PARAMETER", 5);

    param.LoadFromRegistry(L"");

    EXPECT_EQ(30, param.getMainWindowTimeout());
    EXPECT_EQ(tableTexts.at(kServer), param.getConnectToTheseServersString());
    const paramtest::StoredFamily family = paramtest::readConfiguratorFamily();
    EXPECT_EQ(30, family.numbers.at(kMainTimeout));
    EXPECT_EQ(tableTexts.at(kServer), family.texts.at(kServer));
    EXPECT_EQ(5, family.numbers.at(L"ZET_NOT_A_PARAMETER"));
    EXPECT_EQ(0, family.numbers.at(kModeName));
}

TEST_F(RegistryLoadTest, ModeOneTakesStoredValuesAndWritesTheMissingOnes)
{
    setMode(1);
    ZETSettings::intSetConfiguratorValue(kEnable8021x, 0);  // a real identifier
    ZETSettings::intSetConfiguratorValue(kEapType, -1);     // reads as nothing stored
    ZETSettings::intSetConfiguratorValue(kChildTimeout, 25);
    ZETSettings::strSetConfiguratorValue(kServer, L"");  // reads as nothing stored
    ZETSettings::strSetConfiguratorValue(kRootList, L"\"Root A\", \"Root B\"");

    param.LoadFromRegistry(L"");

    EXPECT_EQ(0, param.getEnable8021xCtrlId());
    EXPECT_EQ(tableNumbers.at(kEapType), param.getEapTypeCtrlId());
    EXPECT_EQ(25, param.getChildWindowTimeout());
    EXPECT_EQ(tableTexts.at(kServer), param.getConnectToTheseServersString());
    EXPECT_EQ((std::vector<std::wstring>{L"Root A", L"Root B"}), param.getListOfRootCertToCheck());

    // Everything the object didn't take from the registry is stored with the table's value.
    std::map<std::wstring, int> expectedNumbers = tableNumbers;
    expectedNumbers[kModeName] = 1;
    expectedNumbers[kEnable8021x] = 0;
    expectedNumbers[kChildTimeout] = 25;
    std::map<std::wstring, std::wstring> expectedTexts = tableTexts;
    expectedTexts[kRootList] = L"\"Root A\", \"Root B\"";
    const paramtest::StoredFamily family = paramtest::readConfiguratorFamily();
    EXPECT_EQ(expectedNumbers, family.numbers);
    EXPECT_EQ(expectedTexts, family.texts);
}

TEST_F(RegistryLoadTest, ModeOneReadsOnlyTheKeysTheObjectHolds)
{
    setMode(1);
    ZETSettings::intSetConfiguratorValue(L"ZET_XP_AUTO_CONNECT_CTRL_ID", 5);
    ZETSettings::strSetConfiguratorValue(kServer, L"stored.example");

    ZETConfigParam empty;
    empty.LoadFromRegistry(L"");

    EXPECT_TRUE(Access::numbers(empty).empty());
    EXPECT_TRUE(Access::texts(empty).empty());
    EXPECT_EQ(0, empty.getXpAutoConnectCtrlId());
}

TEST_F(RegistryLoadTest, AnyOtherModeNeitherReadsNorWritesTheTable)
{
    for (int mode : {2, -7}) {
        setMode(mode);
        ZETSettings::intSetConfiguratorValue(kMainTimeout, 99);
        ZETConfigParam loaded(param);
        loaded.LoadFromRegistry(L"");

        EXPECT_EQ(30, loaded.getMainWindowTimeout()) << "mode " << mode;
        const paramtest::StoredFamily family = paramtest::readConfiguratorFamily();
        EXPECT_EQ((std::map<std::wstring, int>{{kModeName, mode}, {kMainTimeout, 99}}), family.numbers)
            << "mode " << mode;
        EXPECT_TRUE(family.texts.empty()) << "mode " << mode;
    }
}

TEST_F(RegistryLoadTest, ThePanelCaptionComesFromTheConnectionsFolderInEveryModeAndStaysInTheObject)
{
    rawreg::writeText(kFolderKey, L"", L"Netzwerkverbindungen");
    for (int mode : {0, 1, 2}) {
        setMode(mode);
        ZETSettings::strSetConfiguratorValue(kPanel, L"Stored caption");
        ZETConfigParam loaded(param);
        loaded.LoadFromRegistry(L"");

        EXPECT_EQ(L"Netzwerkverbindungen", loaded.getNetworkPanelCaption()) << "mode " << mode;
        const std::wstring stored = paramtest::readConfiguratorFamily().texts.at(kPanel);
        EXPECT_EQ(mode == 0 && tableTexts.count(kPanel) ? tableTexts.at(kPanel) : L"Stored caption", stored)
            << "mode " << mode;
    }
}

class AdapterCaptionTest : public RegistryLoadTest
{
protected:
    static const std::wstring kGuid;

    void SetUp() override
    {
        RegistryLoadTest::SetUp();
        // No mirror: the captions are taken in every mode, and the loads stay quick.
        setMode(2);
        rawreg::writeText(kAdapterClassKey + kGuid + L"\\Connection", L"Name", L"WLAN 7");
        // An adapter without a Connection subkey, and one whose Connection has no Name.
        rawreg::writeText(kAdapterClassKey + kNoConnection + L"\\Ndi", L"Service", L"tcpip");
        rawreg::writeText(kAdapterClassKey + kNoName + L"\\Connection", L"PnpInstanceID", L"PCI\\VEN_1");
        Access::texts(param)[kAdapter] = L"Caption before";
    }

    std::wstring captionAfterLoadWith(const std::wstring& adapterId)
    {
        ZETConfigParam loaded(param);
        loaded.LoadFromRegistry(adapterId);
        return loaded.getAdapterCaption();
    }

    const std::wstring kNoConnection = L"{99999999-0000-1111-2222-333344445555}";
    const std::wstring kNoName = L"{88888888-0000-1111-2222-333344445555}";
};

const std::wstring AdapterCaptionTest::kGuid = L"{1A2B3C4D-0000-1111-2222-333344445555}";

TEST_F(AdapterCaptionTest, TheNameOfTheMatchingAdaptersConnectionIsTaken)
{
    EXPECT_EQ(L"WLAN 7", captionAfterLoadWith(L"\\Device\\" + kGuid));
    EXPECT_EQ(L"WLAN 7", captionAfterLoadWith(kGuid));

    // An object without the entry gets one. The mirror runs before the caption is taken, so
    // even in mode 0 nothing of it reaches the family.
    setMode(0);
    ZETConfigParam empty;
    empty.LoadFromRegistry(kGuid);
    EXPECT_EQ(L"WLAN 7", Access::texts(empty).at(kAdapter));
    EXPECT_EQ(0u, paramtest::readConfiguratorFamily().texts.count(kAdapter));
}

TEST_F(AdapterCaptionTest, ArgumentsThatMatchNoAdapterLeaveTheCaptionAsItWas)
{
    const std::wstring arguments[] = {
        L"\\Device\\" + kGuid + L"x",               // more after the closing brace
        L"x{junk}" + kGuid,                         // the cut starts at the first brace
        L"{1a2b3c4d-0000-1111-2222-333344445555}",  // names compare with their case
        L"",                                        // no brace: the cut throws, and is caught
        L"no brace at all",
        kNoConnection,  // matches, but there is no connection to name
        kNoName,
    };
    for (const std::wstring& argument : arguments)
        EXPECT_EQ(L"Caption before", captionAfterLoadWith(argument))
            << std::string(argument.begin(), argument.end());
}

}  // namespace
