// checkNdisStackingOrder against FilterClasses values planted with the bare Win32 calls, and
// the exact value it writes back.
#include <vector>

#include "zetsettings/serial/ZETUtf16.h"
#include "zetsettings/store/tests/StoreTestSupport.h"

namespace {

const wchar_t kNetworkKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Network";
const wchar_t kFilterClasses[] = L"FilterClasses";

// The bytes of a text as the registry functions take and give them for a value of that type,
// with odd bytes behind: text types in wchar_t units, any other type as stored, in UTF-16.
// Texts are written with '|' for each NUL, for legibility.
std::vector<BYTE> bytesOf(std::wstring text, DWORD type = REG_MULTI_SZ, DWORD extraBytes = 0)
{
    for (wchar_t& c : text)
        c = c == L'|' ? L'\0' : c;
    std::vector<BYTE> bytes;
    if (type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ) {
        const BYTE* units = reinterpret_cast<const BYTE*>(text.data());
        bytes.assign(units, units + text.size() * sizeof(wchar_t));
    } else {
        bytes.resize(2 * ZETUtf16::unitCount(text.data(), text.size()));
        ZETUtf16::encode(text.data(), text.size(), bytes.data());
    }
    bytes.resize(bytes.size() + extraBytes, 0x41);
    return bytes;
}

rawreg::RawValue filterClasses()
{
    return rawreg::read(kNetworkKey, kFilterClasses);
}

void plant(const std::wstring& text, DWORD type = REG_MULTI_SZ, DWORD extraBytes = 0)
{
    const std::vector<BYTE> bytes = bytesOf(text, type, extraBytes);
    ASSERT_EQ(ERROR_SUCCESS,
              rawreg::write(kNetworkKey, kFilterClasses, type, bytes.data(), static_cast<DWORD>(bytes.size())));
}

class NdisCheckTest : public zettest::RegistryTest {};

TEST_F(NdisCheckTest, TheLastEntryDecidesAndAWrongListIsRewrittenWithFailoverLast)
{
    const struct {
        std::wstring before;
        DWORD type;
        DWORD extraBytes;
        const wchar_t* after;  // null: found right and left alone
    } cases[] = {
        {L"alpha|FailOver||", REG_MULTI_SZ, 0, nullptr},  // any spelling, kept as it is
        {L"failover||", REG_MULTI_SZ, 0, nullptr},
        {L"FAILOVER|alpha|failover||", REG_MULTI_SZ, 0, nullptr},  // the earlier duplicate stays
        {L"||alpha|failover||||||", REG_MULTI_SZ, 0, nullptr},     // NULs at the ends are trimmed first
        // Other entries keep their spelling and order.
        {L"failover|alpha|Beta||", REG_MULTI_SZ, 0, L"alpha|Beta|failover||"},
        // Every occurrence drops out; the class comes back once, in lower case.
        {L"failover|alpha|FAILOVER|beta||", REG_MULTI_SZ, 0, L"alpha|beta|failover||"},
        {L"||failover2|Gamma||||", REG_MULTI_SZ, 0, L"failover2|Gamma|failover||"},  // whole entries only
        {L"", REG_MULTI_SZ, 0, L"failover||"},
        {L"||||", REG_MULTI_SZ, 0, L"failover||"},
        // The type is not looked at: the data of any type is read as UTF-16.
        {L"alpha|", REG_SZ, 0, L"alpha|failover||"},
        {L"failover|alpha||", REG_BINARY, 1, L"alpha|failover||"},  // an odd byte is no character
        {L"alpha|Beta||", REG_NONE, 0, L"alpha|Beta|failover||"},
        {L"\U0001F600x|Beta|FailOver||", REG_BINARY, 0, nullptr},
        {L"\U0001F600x|Beta||", REG_BINARY, 0, L"\U0001F600x|Beta|failover||"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.before.begin(), c.before.end()));
        plant(c.before, c.type, c.extraBytes);
        const rawreg::RawValue before = filterClasses();
        EXPECT_EQ(c.after == nullptr, ZETSettings::checkNdisStackingOrder());
        const rawreg::RawValue after = filterClasses();
        // "alpha|Beta|failover||" is 21 characters, 42 bytes on Windows.
        EXPECT_EQ(c.after ? bytesOf(c.after) : before.data, after.data);
        EXPECT_EQ(c.after ? static_cast<DWORD>(REG_MULTI_SZ) : before.type, after.type);
        EXPECT_TRUE(!c.after || ZETSettings::checkNdisStackingOrder());  // a rewritten list stands right
    }
}

TEST_F(NdisCheckTest, AMissingKeyOrValueIsReportedAsRightAndNothingIsCreated)
{
    EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
    EXPECT_FALSE(rawreg::keyExists(kNetworkKey));

    const DWORD one = 1;
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kNetworkKey, L"Other", REG_DWORD, &one, sizeof(one)));
    EXPECT_TRUE(ZETSettings::checkNdisStackingOrder());
    EXPECT_EQ(static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND), filterClasses().status);
}

// Exit codes: 0 the check reported the order as right, 1 as wrong; 2 the process kept its
// rights, 3 it can't read the list (so it would say right for another reason).
ZET_CHILD_SCENARIO(NdisCheckWithoutWriteRights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    if (filterClasses().status != ERROR_SUCCESS)
        return 3;
    return ZETSettings::checkNdisStackingOrder() ? 0 : 1;
}

TEST_F(NdisCheckTest, AProcessWithoutWriteRightsGetsTrueAndChangesNothing)
{
    ZET_SKIP_UNLESS_RIGHTS_CAN_DROP();
    plant(L"failover|alpha||");
    EXPECT_EQ(0, zettest::runChild("NdisCheckWithoutWriteRights"));
    EXPECT_EQ(bytesOf(L"failover|alpha||"), filterClasses().data);
}

}  // namespace
