// The version queries, copying, the root certificate list and the machine's network cards.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/params/tests/ParamTestSupport.h"

namespace {

typedef ZETConfigParamTestAccess Access;
typedef std::vector<std::wstring> Names;

const wchar_t kRootList[] = L"ZET_LIST_OF_ROOT_CERT_TO_CHECK";

void setVersion(ZETConfigParam& param, DWORD major, DWORD minor, WORD servicePack)
{
    OSVERSIONINFOEXW& version = Access::version(param);
    version.dwMajorVersion = major;
    version.dwMinorVersion = minor;
    version.wServicePackMajor = servicePack;
}

TEST(ParameterQueriesTest, VersionQueriesFollowMajorMinorAndServicePack)
{
    struct Case {
        DWORD major, minor;
        WORD servicePack;
        bool windows2000, xp, xpSp2;
    };
    const Case cases[] = {
        {5, 0, 0, true, false, false}, {5, 0, 4, true, false, false}, {5, 1, 0, false, true, false},
        {5, 1, 1, false, true, false}, {5, 1, 2, false, true, true},  {5, 1, 3, false, true, false},
        {5, 2, 2, false, false, false}, {6, 0, 2, false, false, false}, {4, 0, 0, false, false, false},
        {0, 0, 0, false, false, false},
    };
    for (const Case& c : cases) {
        ZETConfigParam param;
        setVersion(param, c.major, c.minor, c.servicePack);
        EXPECT_EQ(c.windows2000, param.isWindows2000()) << c.major << "." << c.minor << " sp" << c.servicePack;
        EXPECT_EQ(c.xp, param.isWindowsXP()) << c.major << "." << c.minor << " sp" << c.servicePack;
        EXPECT_EQ(c.xpSp2, param.isWindowsXPSP2()) << c.major << "." << c.minor << " sp" << c.servicePack;
    }
}

// A filled object whose record differs in a byte that no query reads.
ZETConfigParam filledObject()
{
    ZETConfigParam param;
    Access::texts(param)[kRootList] = L"\"A\"";
    Access::texts(param)[L"ZET_ADAPTER_CAPTION"] = L"WLAN";
    Access::numbers(param)[L"ZET_MAIN_WINDOW_TIMEOUT"] = 30;
    setVersion(param, 5, 1, 2);
    Access::version(param).szCSDVersion[0] = 'S';
    return param;
}

bool sameRecord(ZETConfigParam& a, ZETConfigParam& b)
{
    return std::memcmp(&Access::version(a), &Access::version(b), sizeof(OSVERSIONINFOEXW)) == 0;
}

TEST(ParameterQueriesTest, ACopyCarriesBothTablesAndTheWholeVersionRecordAndIsIndependent)
{
    ZETConfigParam original = filledObject();
    ZETConfigParam copy(original);
    EXPECT_EQ(Access::texts(original), Access::texts(copy));
    EXPECT_EQ(Access::numbers(original), Access::numbers(copy));
    EXPECT_TRUE(sameRecord(original, copy));
    EXPECT_TRUE(copy.isWindowsXPSP2());

    Access::numbers(copy)[L"ZET_MAIN_WINDOW_TIMEOUT"] = 1;
    EXPECT_EQ(30, original.getMainWindowTimeout());
}

TEST(ParameterQueriesTest, AssignmentReplacesBothTablesAndSelfAssignmentKeepsThem)
{
    ZETConfigParam source = filledObject();
    ZETConfigParam target;
    Access::texts(target)[L"ZET_ONLY_IN_TARGET"] = L"x";
    Access::numbers(target)[L"ZET_ONLY_IN_TARGET"] = 1;

    ZETConfigParam& result = (target = source);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ(Access::texts(source), Access::texts(target));
    EXPECT_EQ(Access::numbers(source), Access::numbers(target));
    EXPECT_TRUE(sameRecord(source, target));

    const ZETConfigParam& alias = target;
    target = alias;
    EXPECT_EQ(Access::texts(source), Access::texts(target));
    EXPECT_EQ(Access::numbers(source), Access::numbers(target));
}

Names rootCertsOf(const std::wstring& text)
{
    ZETConfigParam param;
    Access::texts(param)[kRootList] = text;
    return param.getListOfRootCertToCheck();
}

TEST(ParameterQueriesTest, RootCertificateListSplitsQuotedNames)
{
    EXPECT_EQ((Names{L"Alpha Root", L"Beta Root"}), rootCertsOf(L"\"Alpha Root\", \"Beta Root\""));
    EXPECT_EQ((Names{L"Alpha Root", L"Beta Root"}), rootCertsOf(L"\"Alpha Root\",\"Beta Root\""));
    EXPECT_EQ((Names{L"Alpha Root", L"Beta Root"}), rootCertsOf(L"  \"Alpha Root\"  ,   \"Beta Root\"  "));
    EXPECT_EQ((Names{L"Acme, Inc. Root", L"B"}), rootCertsOf(L"\"Acme, Inc. Root\", \"B\""));
    EXPECT_EQ((Names{L"Same", L"Same"}), rootCertsOf(L"\"Same\", \"Same\""));
    // The trim applies to every piece, names included.
    EXPECT_EQ((Names{L"Padded"}), rootCertsOf(L"\"  Padded \""));
    // Unquoted text is one piece, less its blanks and one comma at either end.
    EXPECT_EQ((Names{L"plain, text"}), rootCertsOf(L" ,plain, text, "));
    EXPECT_EQ(Names{}, rootCertsOf(L""));
    EXPECT_EQ(Names{}, rootCertsOf(L"\"\", \"\""));
}

class RootCertDefaultTest : public zettest::RegistryTest {};

TEST_F(RootCertDefaultTest, AMissingKeyGivesNoNamesAndTheDefaultOne)
{
    ZETConfigParam param;
    EXPECT_EQ(Names{}, param.getListOfRootCertToCheck());
    param.InitializeDefaults();
    EXPECT_EQ((Names{L"Class 3 Public Primary Certification Authority"}), param.getListOfRootCertToCheck());
}

class NetworkCardsTest : public zettest::RegistryTest {
protected:
    const std::wstring kCards = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";

    void addCard(const std::wstring& subkey, const std::wstring& serviceName)
    {
        rawreg::writeText(kCards + L"\\" + subkey, L"ServiceName", serviceName);
    }
    void addCardWithoutServiceName(const std::wstring& subkey)
    {
        rawreg::writeText(kCards + L"\\" + subkey, L"Description", L"a card");
    }
};

TEST_F(NetworkCardsTest, AMachineWithoutTheListGivesAnEmptyVector)
{
    const boost::shared_ptr<Names> guids = ZETConfigParam::getNetworkCardsGuids();
    ASSERT_TRUE(guids);
    EXPECT_TRUE(guids->empty());
}

TEST_F(NetworkCardsTest, CardsComeInOrderAndAnEmptyServiceNameIsSkipped)
{
    addCard(L"2", L"{B0000000-0000-0000-0000-000000000002}");
    addCard(L"3", L"");
    addCard(L"4", L"{B0000000-0000-0000-0000-000000000004}");
    const boost::shared_ptr<Names> guids = ZETConfigParam::getNetworkCardsGuids();
    ASSERT_TRUE(guids);
    EXPECT_EQ((Names{L"{B0000000-0000-0000-0000-000000000002}", L"{B0000000-0000-0000-0000-000000000004}"}),
              *guids);
    // Each call hands out a vector of its own.
    EXPECT_NE(guids.get(), ZETConfigParam::getNetworkCardsGuids().get());
}

TEST_F(NetworkCardsTest, ACardWithoutServiceNameEndsTheWalk)
{
    addCard(L"2", L"{B0000000-0000-0000-0000-000000000002}");
    addCardWithoutServiceName(L"3");
    addCard(L"4", L"{B0000000-0000-0000-0000-000000000004}");
    const boost::shared_ptr<Names> guids = ZETConfigParam::getNetworkCardsGuids();
    ASSERT_TRUE(guids);
    EXPECT_EQ((Names{L"{B0000000-0000-0000-0000-000000000002}"}), *guids);
}

}  // namespace
