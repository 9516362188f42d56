#include "zetsettings/store/tests/StoreTestSupport.h"

namespace {

const std::wstring kBase = L"Software\\Orvane\\QXL";
const std::wstring kConfigurator = kBase + L"\\ConfiguratorSettings";
const std::wstring kNetlib = kBase + L"\\NetlibSettings";
const std::wstring kGuiHelper = kBase + L"\\GuiHelper";
const std::wstring kRasEap = kBase + L"\\RasEapSettings";
const std::wstring kZetGuard = kBase + L"\\Settings";
const std::wstring kRasmanEap = L"SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26";

using rawreg::stored;

class ValueFamiliesTest : public zettest::RegistryTest {};

// A stored empty text is a value like any other: no getter replaces it by its default.
TEST_F(ValueFamiliesTest, EachFamilyKeepsItsValuesInItsOwnSubkeyWithTheirTypes)
{
    ZETSettings::intSetConfiguratorValue(L"N", 1);
    ZETSettings::intSetNetlibValue(L"N", -2);
    ZETSettings::intSetRasEapValue(L"N", 3);
    ZETSettings::intSetZetGuardValue(L"N", 4);
    ZETSettings::strSetConfiguratorValue(L"T", L"configurator");
    ZETSettings::strSetNetlibValue(L"T", L"");
    ZETSettings::strSetGuiHelperValue(L"T", L"");
    ZETSettings::strSetRasEapValue(L"T", L"raseap");
    ZETSettings::strSetZetGuardValue(L"T", L"");

    // Each family's subkey with what its N and T hold.
    const std::wstring families[][3] = {
        {kConfigurator, L"dword:1", L"sz:configurator"}, {kNetlib, L"dword:4294967294", L"sz:"},
        {kGuiHelper, L"absent", L"sz:"}, {kRasEap, L"dword:3", L"sz:raseap"}, {kZetGuard, L"dword:4", L"sz:"}};
    for (const auto& family : families) {
        EXPECT_EQ(family[1], stored(family[0], L"N"));
        EXPECT_EQ(family[2], stored(family[0], L"T"));
    }
    EXPECT_EQ(L"absent", stored(kBase, L"N"));

    EXPECT_EQ(1, ZETSettings::intGetConfiguratorValue(L"N"));
    EXPECT_EQ(L"configurator", ZETSettings::strGetConfiguratorValue(L"T"));
    EXPECT_EQ(L"", ZETSettings::strGetNetlibValue(L"T", L"dflt"));
    EXPECT_EQ(L"", ZETSettings::strGetGuiHelperValue(L"T", L"dflt"));
    EXPECT_EQ(L"raseap", ZETSettings::strGetRasEapValue(L"T"));
    EXPECT_EQ(L"", ZETSettings::strGetZetGuardValue(L"T", L"dflt", true));
}

TEST_F(ValueFamiliesTest, GettersThatStoreTheirDefaultKeepTheFirstOne)
{
    EXPECT_EQ(L"x", ZETSettings::strGetNetlibValue(L"Text", L"x"));
    EXPECT_EQ(L"x", ZETSettings::strGetNetlibValue(L"Text", L"y"));
    EXPECT_EQ(-5, ZETSettings::intGetNetlibValue(L"Number", -5));
    EXPECT_EQ(-5, ZETSettings::intGetNetlibValue(L"Number", 6));
    EXPECT_EQ(L"caption", ZETSettings::strGetGuiHelperValue(L"Caption", L"caption"));
    EXPECT_EQ(L"caption", ZETSettings::strGetGuiHelperValue(L"Caption", L"other"));
    EXPECT_EQ(26, ZETSettings::intGetRasEapValue(L"Type", 26));
    EXPECT_EQ(26, ZETSettings::intGetRasEapValue(L"Type", 0));
    // ZetGuard stores only when asked to.
    EXPECT_EQ(7, ZETSettings::intGetZetGuardValue(L"Level", 7, false));
    EXPECT_EQ(L"absent", stored(kZetGuard, L"Level"));
    EXPECT_EQ(8, ZETSettings::intGetZetGuardValue(L"Level", 8, true));
    EXPECT_EQ(8, ZETSettings::intGetZetGuardValue(L"Level", 9, false));
    EXPECT_EQ(L"a", ZETSettings::strGetZetGuardValue(L"Name", L"a", false));
    EXPECT_EQ(L"absent", stored(kZetGuard, L"Name"));
    EXPECT_EQ(L"b", ZETSettings::strGetZetGuardValue(L"Name", L"b", true));
    EXPECT_EQ(L"b", ZETSettings::strGetZetGuardValue(L"Name", L"c", false));
}

// Without a default a miss gives -1 or the empty text, stores nothing, and still leaves the
// family's subkey behind.
TEST_F(ValueFamiliesTest, GettersWithoutADefaultGiveSentinelsAndLeaveOnlyTheirSubkey)
{
    ASSERT_FALSE(rawreg::keyExists(kBase));
    EXPECT_EQ(-1, ZETSettings::intGetConfiguratorValue(L"Absent"));
    EXPECT_EQ(L"", ZETSettings::strGetConfiguratorValue(L"Absent"));
    EXPECT_EQ(L"", ZETSettings::strGetRasEapValue(L"Absent"));
    EXPECT_TRUE(rawreg::keyExists(kConfigurator) && stored(kConfigurator, L"Absent") == L"absent");
    EXPECT_TRUE(rawreg::keyExists(kRasEap) && stored(kRasEap, L"Absent") == L"absent");

    // A stored all-ones number reads as the sentinel.
    ZETSettings::intSetConfiguratorValue(L"AllOnes", -1);
    EXPECT_EQ(-1, ZETSettings::intGetConfiguratorValue(L"AllOnes"));
}

TEST_F(ValueFamiliesTest, RasmanEapReportsErrorCodesAndNeverCreatesItsKey)
{
    std::wstring value = L"untouched";
    EXPECT_NE(0u, ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_NE(0u, ZETSettings::strSetRasmanEapSettings(L"Setting", L"v"));
    EXPECT_FALSE(rawreg::keyExists(kRasmanEap));

    ASSERT_EQ(ERROR_SUCCESS, rawreg::writeText(kRasmanEap, L"Other", L"o"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_EQ(L"untouched", value);

    EXPECT_EQ(0u, ZETSettings::strSetRasmanEapSettings(L"Setting", L"stored"));
    EXPECT_EQ(L"sz:stored", stored(kRasmanEap, L"Setting"));
    EXPECT_EQ(0u, ZETSettings::strGetRasmanEapSettings(L"Setting", value));
    EXPECT_EQ(L"stored", value);
}

// Run by a user that may read the store but not write it. Exit codes name the first broken
// expectation.
ZET_CHILD_SCENARIO(ValueFamiliesWithoutWriteRights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    if (ZETSettings::intGetNetlibValue(L"Stored", 8) != 8 || ZETSettings::intGetConfiguratorValue(L"Stored") != -1 ||
        ZETSettings::strGetGuiHelperValue(L"Absent", L"dflt") != L"dflt" ||
        ZETSettings::intGetZetGuardValue(L"Absent", 6, true) != 6)
        return 3;
    ZETSettings::intSetNetlibValue(L"Stored", 9);
    ZETSettings::strSetRasEapValue(L"Written", L"x");
    std::wstring value = L"kept";
    if (ZETSettings::strGetRasmanEapSettings(L"Setting", value) != 0 || value != L"stored")
        return 4;
    if (ZETSettings::strSetRasmanEapSettings(L"Setting", L"child") != static_cast<DWORD>(ERROR_ACCESS_DENIED))
        return 5;
    return 0;
}

TEST_F(ValueFamiliesTest, AProcessWithoutWriteRightsGetsDefaultsAndOnlyTheEapPairComplains)
{
    ZET_SKIP_UNLESS_RIGHTS_CAN_DROP();
    ZETSettings::intSetNetlibValue(L"Stored", 1);
    ZETSettings::intSetConfiguratorValue(L"Stored", 1);
    ASSERT_EQ(ERROR_SUCCESS, rawreg::writeText(kRasmanEap, L"Setting", L"stored"));

    ASSERT_EQ(0, zettest::runChild("ValueFamiliesWithoutWriteRights"));

    EXPECT_EQ(L"dword:1", stored(kNetlib, L"Stored"));
    EXPECT_FALSE(rawreg::keyExists(kGuiHelper));
    EXPECT_EQ(L"absent", stored(kZetGuard, L"Absent"));
    EXPECT_FALSE(rawreg::keyExists(kRasEap));
    EXPECT_EQ(L"sz:stored", stored(kRasmanEap, L"Setting"));
}

}  // namespace
