// Copying, the root certificate list and the machine's network cards. The version queries are
// checked with the defaults, on each version.
#include <cstring>
#include <vector>

#include "zetsettings/params/tests/ParamTestSupport.h"

namespace {

typedef std::vector<std::wstring> Names;

ZETConfigParam filledObject()
{
    ZETConfigParam param;
    Access::texts(param)[kRootList] = L"\"A\"";
    Access::numbers(param)[L"ZET_MAIN_WINDOW_TIMEOUT"] = 30;
    std::memset(&Access::version(param), 0x35, sizeof(OSVERSIONINFOEXW));  // every byte counts
    return param;
}

void expectSame(ZETConfigParam& expected, ZETConfigParam& actual)
{
    EXPECT_EQ(Access::texts(expected), Access::texts(actual));
    EXPECT_EQ(Access::numbers(expected), Access::numbers(actual));
    EXPECT_EQ(0, std::memcmp(&Access::version(expected), &Access::version(actual), sizeof(OSVERSIONINFOEXW)));
}

TEST(ParameterQueriesTest, CopyAndAssignmentCarryBothTablesAndTheWholeVersionRecord)
{
    ZETConfigParam original = filledObject();
    ZETConfigParam copy(original);
    expectSame(original, copy);
    Access::numbers(copy)[L"ZET_MAIN_WINDOW_TIMEOUT"] = 1;
    EXPECT_EQ(30, original.getMainWindowTimeout());

    ZETConfigParam target;
    Access::texts(target)[L"ZET_ONLY_IN_TARGET"] = L"x";
    Access::numbers(target)[L"ZET_ONLY_IN_TARGET"] = 1;
    EXPECT_EQ(&target, &(target = original));
    expectSame(original, target);
    const ZETConfigParam& alias = target;
    target = alias;
    expectSame(original, target);
}

TEST(ParameterQueriesTest, TheRootCertificateListHoldsTheQuotedNamesInOrder)
{
    const struct {
        const wchar_t* text;
        Names names;
    } cases[] = {
        {L"\"Alpha Root\", \"Beta Root\"", {L"Alpha Root", L"Beta Root"}},
        {L"\"Alpha Root\",\"Beta Root\"", {L"Alpha Root", L"Beta Root"}},
        {L"  \"Alpha Root\"  ,   \"Beta Root\"  ", {L"Alpha Root", L"Beta Root"}},
        {L"\"Acme, Inc. Root\", \"B\", \"B\"", {L"Acme, Inc. Root", L"B", L"B"}},  // commas inside, duplicates
        {L"\"  Padded \"", {L"Padded"}},  // the trim applies to the names too
        {L" ,plain, text, ", {L"plain, text"}},  // unquoted: one piece, less blanks and one comma
        {L"", {}},
        {L"\"\", \"\"", {}},
        {nullptr, {}},  // no entry at all
    };
    for (const auto& c : cases) {
        ZETConfigParam param;
        if (c.text)
            Access::texts(param)[kRootList] = c.text;
        EXPECT_EQ(c.names, param.getListOfRootCertToCheck()) << (c.text ? "with text" : "without entry");
    }
}

void addCard(const std::wstring& subkey, const wchar_t* name, const std::wstring& value)
{
    rawreg::writeText(L"Software\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\" + subkey, name, value);
}

class NetworkCardsTest : public zettest::RegistryTest {};

TEST_F(NetworkCardsTest, TheWalkSkipsAnEmptyServiceNameAndEndsAtACardWithout)
{
    // A machine without the list: a vector all the same.
    boost::shared_ptr<Names> guids = ZETConfigParam::getNetworkCardsGuids();
    ASSERT_TRUE(guids);
    EXPECT_TRUE(guids->empty());

    addCard(L"2", L"ServiceName", L"{B0000000-0000-0000-0000-000000000002}");
    addCard(L"3", L"ServiceName", L"");
    addCard(L"4", L"ServiceName", L"{B0000000-0000-0000-0000-000000000004}");
    addCard(L"5", L"Description", L"a card without a service name");
    addCard(L"6", L"ServiceName", L"{B0000000-0000-0000-0000-000000000006}");
    const boost::shared_ptr<Names> earlier = guids;
    guids = ZETConfigParam::getNetworkCardsGuids();
    ASSERT_TRUE(guids);
    EXPECT_EQ((Names{L"{B0000000-0000-0000-0000-000000000002}", L"{B0000000-0000-0000-0000-000000000004}"}), *guids);
    EXPECT_TRUE(earlier->empty()) << "each call hands out a vector of its own";
}

}  // namespace
