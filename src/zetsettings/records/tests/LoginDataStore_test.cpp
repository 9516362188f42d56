#include <gtest/gtest.h>

#include <string>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

struct Login {
    std::wstring user = L"stale user", password = L"stale password";
    bool enabled = true, keep = true, dependent = true;

    static Login read()
    {
        Login login;
        ZETSettings::getLoginData(login.user, login.password, login.enabled, login.keep, login.dependent);
        return login;
    }
    bool empty() const { return user.empty() && password.empty() && !enabled && !keep && !dependent; }
};

std::string loginPlainForm(const std::wstring& user, const std::wstring& password, unsigned char enabled,
                           unsigned char keep, unsigned char dependent)
{
    ZETLoginData record;
    record.userName = user;
    record.password = password;
    record.loginEnabled.value = enabled;
    record.keepPassword.value = keep;
    record.dependentFlag.value = dependent;
    return plainForm(record);
}

class LoginDataStoreTest : public zettest::RegistryTest {};

TEST_F(LoginDataStoreTest, TheSwitchesDecideWhatIsStored)
{
    for (int bits = 0; bits < 8; ++bits) {
        const bool enabled = bits & 1, keep = enabled && (bits & 2), dependent = keep && (bits & 4);
        SCOPED_TRACE(bits);
        ZETSettings::setLoginData(L"Operator", L"s3cret", bits & 1, bits & 2, bits & 4);
        const Login login = Login::read();
        EXPECT_EQ(L"Operator", login.user);
        EXPECT_EQ(keep ? L"s3cret" : L"", login.password);
        EXPECT_EQ(enabled, login.enabled);
        EXPECT_EQ(keep, login.keep);
        EXPECT_EQ(dependent, login.dependent);
        // The stored record holds the same: no password behind a switch that keeps none.
        EXPECT_EQ(loginPlainForm(L"Operator", keep ? L"s3cret" : L"", enabled, keep, dependent),
                  decrypt(rawValue(kBase, L"LoginSettings")));
    }
    // Text enters up to its first null character.
    ZETSettings::setLoginData(std::wstring(L"ab\0cd", 5), std::wstring(L"pw\0tail", 7), true, true, false);
    EXPECT_EQ(L"ab", Login::read().user);
    EXPECT_EQ(L"pw", Login::read().password);
}

TEST_F(LoginDataStoreTest, NothingStoredEmptiesTheCallersVariables)
{
    EXPECT_TRUE(Login::read().empty());
    EXPECT_TRUE(keyExists(kBase));
    ZETSettings::setLoginData(L"Operator", L"pw", true, true, true);
    ZETSettings::removeLoginData();
    EXPECT_TRUE(Login::read().empty());
    std::string ignored;
    EXPECT_FALSE(readRaw(kBase, L"LoginSettings", ignored));
    ZETSettings::removeLoginData();
    EXPECT_TRUE(Login::read().empty());
}

TEST_F(LoginDataStoreTest, BadStoredValuesReadAsFarAsTheyGo)
{
    // A flag byte other than 1 reads false, each flag on its own.
    storeProtected(L"LoginSettings", loginPlainForm(L"u", L"p", 2, 1, 255));
    Login login = Login::read();
    EXPECT_EQ(L"p", login.password);
    EXPECT_TRUE(!login.enabled && login.keep && !login.dependent);

    // Cut before the flags: the strings come back, the flags stay false.
    const std::string whole = loginPlainForm(L"user", L"pass", 1, 1, 1);
    storeProtected(L"LoginSettings", whole.substr(0, whole.size() - 3));
    login = Login::read();
    EXPECT_EQ(L"pass", login.password);
    EXPECT_FALSE(login.enabled || login.keep || login.dependent);

    writeRaw(kBase, L"LoginSettings", std::string(64, '\x5A'));
    EXPECT_TRUE(Login::read().empty());
}

TEST_F(LoginDataStoreTest, NeitherNameNorPasswordStandsInTheClear)
{
    const std::wstring user = L"Wilhelmina.Q\u00E9rard";
    const std::wstring password = L"Pa55-Zx\u00F8-horse-battery";
    ZETSettings::setLoginData(user, password, true, true, true);
    expectNoPlainText(registry, {user, password});
    EXPECT_TRUE(holdsText(decrypt(rawValue(kBase, L"LoginSettings")), password));

    ZETSettings::setLoginData(user, password, true, false, true);
    expectNoPlainText(registry, {user, password});
}

}  // namespace
