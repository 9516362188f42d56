// checkNdisStackingOrder against FilterClasses values planted with the bare Win32 calls, and
// the exact value it writes back.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace {

const wchar_t kNetworkKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Network";
const wchar_t kFilterClasses[] = L"FilterClasses";

// Multi-strings are written with '|' for each NUL, for legibility.
std::wstring multi(const std::wstring& legible)
{
    std::wstring text = legible;
    for (wchar_t& c : text) {
        if (c == L'|')
            c = L'\0';
    }
    return text;
}

// For failure messages: the legible form is plain ASCII.
std::string legible(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

void plant(const std::wstring& text, DWORD type = REG_MULTI_SZ, DWORD extraBytes = 0)
{
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t) + extraBytes, 0x41);
    if (!text.empty())
        std::memcpy(bytes.data(), text.data(), text.size() * sizeof(wchar_t));
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kNetworkKey, kFilterClasses, type, bytes.data(),
                                           static_cast<DWORD>(bytes.size())));
}

struct Stored {
    DWORD type;
    std::wstring text;  // every unit, NULs included
    DWORD bytes;
};

Stored stored()
{
    const rawreg::RawValue value = rawreg::read(kNetworkKey, kFilterClasses);
    Stored result = {value.type, std::wstring(value.data.size() / sizeof(wchar_t), L'\0'),
                     static_cast<DWORD>(value.data.size())};
    if (!result.text.empty())
        std::memcpy(&result.text[0], value.data.data(), result.text.size() * sizeof(wchar_t));
    EXPECT_EQ(ERROR_SUCCESS, value.status);
    return result;
}

class NdisCheckTest : public zettest::RegistryTest {
protected:
    // Checks the list and expects it rewritten to exactly `rewritten`, with the type of a
    // multi-string and a size of two bytes per character on Windows ("alpha|Beta|failover||":
    // 21 characters, 42 bytes).
    void expectRewritten(const std::wstring& rewritten)
    {
        EXPECT_FALSE(ZETSettings::checkNdisStackingOrder());
        const Stored after = stored();
        EXPECT_EQ(static_cast<DWORD>(REG_MULTI_SZ), after.type);
        EXPECT_EQ(multi(rewritten), after.text);
        EXPECT_EQ(rewritten.size() * sizeof(wchar_t), after.bytes);
        // Now failover stands last.
        EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
        EXPECT_EQ(multi(rewritten), stored().text);
    }

    void expectLeftAlone()
    {
        const Stored before = stored();
        EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
        const Stored after = stored();
        EXPECT_EQ(before.type, after.type);
        EXPECT_EQ(before.text, after.text);
        EXPECT_EQ(before.bytes, after.bytes);
    }
};

TEST_F(NdisCheckTest, AListWithoutFailoverLastIsRewrittenWithItLast)
{
    struct Case {
        const wchar_t* before;
        const wchar_t* after;
    };
    const Case cases[] = {
        // Other entries keep their spelling and order.
        {L"failover|alpha|Beta||", L"alpha|Beta|failover||"},
        // Every earlier occurrence drops out; the class comes back once, in lower case.
        {L"failover|alpha|FAILOVER|beta||", L"alpha|beta|failover||"},
        // Only a whole entry is the class.
        {L"failover2||", L"failover2|failover||"},
        {L"||failover2|Gamma||||", L"failover2|Gamma|failover||"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(legible(c.before));
        plant(multi(c.before));
        expectRewritten(c.after);
    }
}

TEST_F(NdisCheckTest, ALastFailoverInAnySpellingLeavesTheValueAlone)
{
    const wchar_t* const values[] = {
        L"alpha|FailOver||",
        L"failover||",
        L"FAILOVER|alpha|failover||",  // the last entry decides: the earlier one stays
        L"alpha|failover||||||",       // extra terminators are trimmed first
        L"||alpha|failover||",
    };
    for (const wchar_t* value : values) {
        SCOPED_TRACE(legible(value));
        plant(multi(value));
        expectLeftAlone();
    }
}

TEST_F(NdisCheckTest, AListWithoutEntriesGetsFailoverAlone)
{
    plant(L"");
    expectRewritten(L"failover||");
    plant(multi(L"||||"));
    expectRewritten(L"failover||");
}

TEST_F(NdisCheckTest, AValueOfAnotherTypeIsReadAsText)
{
    plant(multi(L"alpha|"), REG_SZ);
    expectRewritten(L"alpha|failover||");
    const DWORD zero = 0;
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kNetworkKey, kFilterClasses, REG_DWORD, &zero, sizeof(zero)));
    expectRewritten(L"failover||");
}

TEST_F(NdisCheckTest, AnOddTrailingByteIsNoCharacter)
{
    plant(multi(L"alpha|failover||"), REG_BINARY, 1);
    expectLeftAlone();
    plant(multi(L"failover|alpha||"), REG_BINARY, 1);
    expectRewritten(L"alpha|failover||");
}

TEST_F(NdisCheckTest, AMissingKeyOrValueIsReportedAsRightAndNothingIsCreated)
{
    EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
    EXPECT_FALSE(rawreg::keyExists(kNetworkKey));

    const DWORD one = 1;
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kNetworkKey, L"Other", REG_DWORD, &one, sizeof(one)));
    EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
    EXPECT_EQ(static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND), rawreg::read(kNetworkKey, kFilterClasses).status);
}

// Exit code 0 when the check reported the order as right.
ZET_CHILD_SCENARIO(NdisCheckWithoutWriteRights)
{
    (void)args;
    if (!zettest::becomeUnprivileged())
        return 2;
    return ZETSettings::checkNdisStackingOrder() ? 0 : 1;
}

TEST_F(NdisCheckTest, AProcessWithoutWriteRightsGetsTrueAndChangesNothing)
{
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "this registry can't be made read-only for a process";
    plant(multi(L"failover|alpha||"));
    EXPECT_EQ(0, zettest::runChild("NdisCheckWithoutWriteRights"));
    EXPECT_EQ(multi(L"failover|alpha||"), stored().text);
}

}  // namespace
