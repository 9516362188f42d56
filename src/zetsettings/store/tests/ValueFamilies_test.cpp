#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace {

const std::wstring kBase = L"Software\\Orvane\\QXL";
const std::wstring kConfigurator = kBase + L"\\ConfiguratorSettings";
const std::wstring kNetlib = kBase + L"\\NetlibSettings";
const std::wstring kGuiHelper = kBase + L"\\GuiHelper";
const std::wstring kRasEap = kBase + L"\\RasEapSettings";
const std::wstring kZetGuard = kBase + L"\\Settings";
const std::wstring kRasmanEap = L"SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26";

bool isAbsent(const std::wstring& path, const std::wstring& name)
{
    return rawreg::read(path, name).status == ERROR_FILE_NOT_FOUND;
}

DWORD storedNumber(const std::wstring& path, const std::wstring& name)
{
    const rawreg::RawValue value = rawreg::read(path, name);
    EXPECT_EQ(ERROR_SUCCESS, value.status);
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), value.type);
    DWORD number = 0;
    if (value.data.size() == sizeof number)
        std::memcpy(&number, value.data.data(), sizeof number);
    return number;
}

std::wstring storedText(const std::wstring& path, const std::wstring& name)
{
    const rawreg::RawValue value = rawreg::read(path, name);
    EXPECT_EQ(ERROR_SUCCESS, value.status);
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), value.type);
    return rawreg::textOf(value);
}

class ValueFamiliesTest : public zettest::RegistryTest {};

TEST_F(ValueFamiliesTest, EachFamilyKeepsItsValuesInItsOwnSubkey)
{
    ZETSettings::intSetConfiguratorValue(L"N", 1);
    ZETSettings::intSetNetlibValue(L"N", 2);
    ZETSettings::intSetRasEapValue(L"N", 3);
    ZETSettings::intSetZetGuardValue(L"N", 4);
    ZETSettings::strSetConfiguratorValue(L"T", L"configurator");
    ZETSettings::strSetNetlibValue(L"T", L"netlib");
    ZETSettings::strSetGuiHelperValue(L"T", L"gui");
    ZETSettings::strSetRasEapValue(L"T", L"raseap");
    ZETSettings::strSetZetGuardValue(L"T", L"guard");

    EXPECT_EQ(1u, storedNumber(kConfigurator, L"N"));
    EXPECT_EQ(2u, storedNumber(kNetlib, L"N"));
    EXPECT_EQ(3u, storedNumber(kRasEap, L"N"));
    EXPECT_EQ(4u, storedNumber(kZetGuard, L"N"));
    EXPECT_EQ(L"configurator", storedText(kConfigurator, L"T"));
    EXPECT_EQ(L"netlib", storedText(kNetlib, L"T"));
    EXPECT_EQ(L"gui", storedText(kGuiHelper, L"T"));
    EXPECT_EQ(L"raseap", storedText(kRasEap, L"T"));
    EXPECT_EQ(L"guard", storedText(kZetGuard, L"T"));
    EXPECT_TRUE(isAbsent(kBase, L"N"));

    EXPECT_EQ(1, ZETSettings::intGetConfiguratorValue(L"N"));
    EXPECT_EQ(2, ZETSettings::intGetNetlibValue(L"N", 0));
    EXPECT_EQ(3, ZETSettings::intGetRasEapValue(L"N", 0));
    EXPECT_EQ(4, ZETSettings::intGetZetGuardValue(L"N", 0, true));
    EXPECT_EQ(L"configurator", ZETSettings::strGetConfiguratorValue(L"T"));
    EXPECT_EQ(L"netlib", ZETSettings::strGetNetlibValue(L"T", L""));
    EXPECT_EQ(L"gui", ZETSettings::strGetGuiHelperValue(L"T", L""));
    EXPECT_EQ(L"raseap", ZETSettings::strGetRasEapValue(L"T"));
    EXPECT_EQ(L"guard", ZETSettings::strGetZetGuardValue(L"T", L"", true));
}

TEST_F(ValueFamiliesTest, ConfiguratorReadsGiveSentinelsAndStoreNothing)
{
    EXPECT_EQ(-1, ZETSettings::intGetConfiguratorValue(L"Absent"));
    EXPECT_EQ(L"", ZETSettings::strGetConfiguratorValue(L"AbsentText"));
    EXPECT_TRUE(rawreg::keyExists(kConfigurator));
    EXPECT_TRUE(isAbsent(kConfigurator, L"Absent"));
    EXPECT_TRUE(isAbsent(kConfigurator, L"AbsentText"));

    // A stored 0xFFFFFFFF can't be told from an absent value.
    ZETSettings::intSetConfiguratorValue(L"AllOnes", -1);
    EXPECT_EQ(0xFFFFFFFFu, storedNumber(kConfigurator, L"AllOnes"));
    EXPECT_EQ(-1, ZETSettings::intGetConfiguratorValue(L"AllOnes"));
    ZETSettings::intSetConfiguratorValue(L"AllOnes", 0);
    EXPECT_EQ(0, ZETSettings::intGetConfiguratorValue(L"AllOnes"));
}

TEST_F(ValueFamiliesTest, NetlibAndGuiHelperStoreTheFirstDefaultTheySee)
{
    EXPECT_EQ(L"x", ZETSettings::strGetNetlibValue(L"Text", L"x"));
    EXPECT_EQ(L"x", storedText(kNetlib, L"Text"));
    EXPECT_EQ(L"x", ZETSettings::strGetNetlibValue(L"Text", L"y"));

    EXPECT_EQ(-5, ZETSettings::intGetNetlibValue(L"Number", -5));
    EXPECT_EQ(static_cast<DWORD>(-5), storedNumber(kNetlib, L"Number"));
    EXPECT_EQ(-5, ZETSettings::intGetNetlibValue(L"Number", 6));

    EXPECT_EQ(L"caption", ZETSettings::strGetGuiHelperValue(L"Caption", L"caption"));
    EXPECT_EQ(L"caption", storedText(kGuiHelper, L"Caption"));
    EXPECT_EQ(L"caption", ZETSettings::strGetGuiHelperValue(L"Caption", L"other"));
}

TEST_F(ValueFamiliesTest, RasEapStoresItsNumberDefaultButHasNoTextDefault)
{
    EXPECT_EQ(26, ZETSettings::intGetRasEapValue(L"Type", 26));
    EXPECT_EQ(26u, storedNumber(kRasEap, L"Type"));
    EXPECT_EQ(26, ZETSettings::intGetRasEapValue(L"Type", 0));

    EXPECT_EQ(L"", ZETSettings::strGetRasEapValue(L"Identity"));
    EXPECT_TRUE(isAbsent(kRasEap, L"Identity"));
}

TEST_F(ValueFamiliesTest, ZetGuardStoresTheDefaultOnlyWhenAsked)
{
    EXPECT_EQ(7, ZETSettings::intGetZetGuardValue(L"Level", 7, false));
    EXPECT_TRUE(isAbsent(kZetGuard, L"Level"));
    EXPECT_EQ(8, ZETSettings::intGetZetGuardValue(L"Level", 8, true));
    EXPECT_EQ(8u, storedNumber(kZetGuard, L"Level"));
    EXPECT_EQ(8, ZETSettings::intGetZetGuardValue(L"Level", 9, false));

    EXPECT_EQ(L"a", ZETSettings::strGetZetGuardValue(L"Name", L"a", false));
    EXPECT_TRUE(isAbsent(kZetGuard, L"Name"));
    EXPECT_EQ(L"b", ZETSettings::strGetZetGuardValue(L"Name", L"b", true));
    EXPECT_EQ(L"b", ZETSettings::strGetZetGuardValue(L"Name", L"c", true));
}

TEST_F(ValueFamiliesTest, AGetterLeavesItsSubkeyBehindEvenWhenItStoresNothing)
{
    ASSERT_FALSE(rawreg::keyExists(kBase));
    ZETSettings::strGetRasEapValue(L"Nothing");
    EXPECT_TRUE(rawreg::keyExists(kRasEap));
    ZETSettings::intGetZetGuardValue(L"Nothing", 0, false);
    EXPECT_TRUE(rawreg::keyExists(kZetGuard));
    EXPECT_TRUE(isAbsent(kZetGuard, L"Nothing"));
    EXPECT_FALSE(rawreg::keyExists(kNetlib));
    EXPECT_FALSE(rawreg::keyExists(kGuiHelper));
}

TEST_F(ValueFamiliesTest, AStoredEmptyTextBeatsEveryDefault)
{
    const std::wstring paths[] = {kConfigurator, kNetlib, kGuiHelper, kRasEap, kZetGuard};
    for (const std::wstring& path : paths)
        ASSERT_EQ(ERROR_SUCCESS, rawreg::writeText(path, L"Empty", L""));

    EXPECT_EQ(L"", ZETSettings::strGetConfiguratorValue(L"Empty"));
    EXPECT_EQ(L"", ZETSettings::strGetNetlibValue(L"Empty", L"dflt"));
    EXPECT_EQ(L"", ZETSettings::strGetGuiHelperValue(L"Empty", L"dflt"));
    EXPECT_EQ(L"", ZETSettings::strGetRasEapValue(L"Empty"));
    EXPECT_EQ(L"", ZETSettings::strGetZetGuardValue(L"Empty", L"dflt", true));
    for (const std::wstring& path : paths)
        EXPECT_EQ(L"", storedText(path, L"Empty"));
}

TEST_F(ValueFamiliesTest, RasmanEapReportsErrorCodesAndNeverCreatesItsKey)
{
    std::wstring value = L"untouched";
    EXPECT_NE(0u, ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_EQ(L"untouched", value);
    EXPECT_NE(0u, ZETSettings::strSetRasmanEapSettings(L"Setting", L"v"));
    EXPECT_FALSE(rawreg::keyExists(kRasmanEap));

    ASSERT_EQ(ERROR_SUCCESS, rawreg::writeText(kRasmanEap, L"Other", L"o"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_EQ(L"untouched", value);

    EXPECT_EQ(0u, ZETSettings::strSetRasmanEapSettings(L"Setting", L"stored"));
    EXPECT_EQ(L"stored", storedText(kRasmanEap, L"Setting"));
    EXPECT_EQ(0u, ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_EQ(L"stored", value);
    EXPECT_FALSE(rawreg::keyExists(kBase));
}

// Run by a user that may read the store but not write it. Exit codes name the first broken
// expectation.
ZET_CHILD_SCENARIO(ValueFamiliesWithoutWriteRights)
{
    (void)args;
    if (!zettest::becomeUnprivileged())
        return 2;
    if (ZETSettings::intGetNetlibValue(L"Stored", 8) != 8)
        return 3;
    if (ZETSettings::strGetGuiHelperValue(L"Absent", L"dflt") != L"dflt")
        return 4;
    if (ZETSettings::intGetConfiguratorValue(L"Stored") != -1)
        return 5;
    if (ZETSettings::intGetZetGuardValue(L"Absent", 6, true) != 6)
        return 6;
    ZETSettings::intSetNetlibValue(L"Stored", 9);
    ZETSettings::strSetRasEapValue(L"Written", L"x");
    std::wstring value = L"kept";
    if (ZETSettings::strGetRasmanEapSettings(L"Setting", value) != 0 || value != L"stored")
        return 7;
    if (ZETSettings::strSetRasmanEapSettings(L"Setting", L"child") == 0)
        return 8;
    return 0;
}

TEST_F(ValueFamiliesTest, AProcessWithoutWriteRightsGetsDefaultsAndOnlyTheEapPairComplains)
{
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "this registry grants every process every right";
    ZETSettings::intSetNetlibValue(L"Stored", 1);
    ZETSettings::intSetConfiguratorValue(L"Stored", 1);
    ASSERT_EQ(ERROR_SUCCESS, rawreg::writeText(kRasmanEap, L"Setting", L"stored"));

    ASSERT_EQ(0, zettest::runChild("ValueFamiliesWithoutWriteRights"));

    EXPECT_EQ(1u, storedNumber(kNetlib, L"Stored"));
    EXPECT_FALSE(rawreg::keyExists(kGuiHelper));
    EXPECT_TRUE(isAbsent(kZetGuard, L"Absent"));
    EXPECT_FALSE(rawreg::keyExists(kRasEap));
    EXPECT_EQ(L"stored", storedText(kRasmanEap, L"Setting"));
}

}  // namespace
