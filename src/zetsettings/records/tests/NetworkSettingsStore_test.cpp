#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/store/tests/RawRegistry.h"

namespace {

typedef boost::shared_ptr<ZETNetworkSettings> Profile;

const std::wstring kNetworkSettings = L"Software\\Orvane\\QXL\\NetworkSettings";
const std::string kSecret = "correct horse battery staple";

ZETBuf bufferOf(const std::string& bytes)
{
    return ZETBuf(bytes.data(), bytes.size());
}

Profile makeProfile(const std::wstring& text, const std::string& secret, const std::string& clear = "clear part")
{
    Profile profile(new ZETNetworkSettings);
    profile->profileText = text;
    profile->profileFlag1 = 1;
    profile->profileFlag2 = 0;
    profile->profileFlag3 = 255;
    profile->profileFlag4 = 2;
    profile->protectedBlob = bufferOf(secret);
    profile->plainBlob = bufferOf(clear);
    return profile;
}

std::vector<BYTE> serialFormOf(const ZETSerializeInterface& object)
{
    std::vector<BYTE> bytes(static_cast<std::size_t>(object.getSerLength()));
    bytes.resize(static_cast<std::size_t>(object.serialize(bytes.data())));
    return bytes;
}

bool holds(const std::vector<BYTE>& bytes, const std::string& needle)
{
    return std::search(bytes.begin(), bytes.end(), needle.begin(), needle.end()) != bytes.end();
}

void plantValue(const std::wstring& valueName, const std::vector<BYTE>& bytes)
{
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kNetworkSettings, valueName, REG_BINARY, bytes.data(),
                                           static_cast<DWORD>(bytes.size())));
}

std::vector<std::wstring> sortedKeys()
{
    std::vector<std::wstring> names = ZETSettings::getNetworkSettingsKeys();
    std::sort(names.begin(), names.end());
    return names;
}

class NetworkSettingsTest : public zettest::RegistryTest {};

TEST_F(NetworkSettingsTest, AProfileComesBackWithItsSecretInPlainForm)
{
    Profile stored = makeProfile(L"home profile", kSecret);
    ZETSettings::setNetworkSettings(L"MyWLAN", stored);

    Profile read = ZETSettings::getNetworkSettings(L"MyWLAN");
    ASSERT_TRUE(read);
    EXPECT_NE(stored.get(), read.get());
    EXPECT_EQ(L"home profile", read->profileText);
    EXPECT_EQ(1, read->profileFlag1);
    EXPECT_EQ(0, read->profileFlag2);
    EXPECT_EQ(255, read->profileFlag3);
    EXPECT_EQ(2, read->profileFlag4);
    EXPECT_EQ(bufferOf(kSecret), read->protectedBlob);
    EXPECT_EQ(bufferOf("clear part"), read->plainBlob);

    // The caller's record keeps the ciphertext; the rest of it is as it was.
    EXPECT_NE(bufferOf(kSecret), stored->protectedBlob);
    EXPECT_FALSE(stored->protectedBlob.isEmpty());
    EXPECT_EQ(bufferOf("clear part"), stored->plainBlob);
    EXPECT_EQ(L"home profile", stored->profileText);

    // The same record with plain content put back overwrites the value.
    stored->protectedBlob = bufferOf("new secret");
    ZETSettings::setNetworkSettings(L"MyWLAN", stored);
    EXPECT_EQ(bufferOf("new secret"), ZETSettings::getNetworkSettings(L"MyWLAN")->protectedBlob);
}

TEST_F(NetworkSettingsTest, TheRegistryHoldsTheClearMembersAroundTheCiphertextOfTheSecret)
{
    Profile stored = makeProfile(L"ab", kSecret);
    stored->profileFlag3 = 0;
    const ZETBuf plainSecret = stored->protectedBlob;
    ZETSettings::setNetworkSettings(L"MyWLAN", stored);

    const rawreg::RawValue value = rawreg::read(kNetworkSettings, L"MyWLAN_BC");
    ASSERT_EQ(ERROR_SUCCESS, value.status);
    EXPECT_EQ(static_cast<DWORD>(REG_BINARY), value.type);
    const std::vector<BYTE> clearHead = {4, 0, 0, 0, 'a', 0, 'b', 0, 1, 0, 0, 2};
    ASSERT_GT(value.data.size(), clearHead.size());
    EXPECT_TRUE(std::equal(clearHead.begin(), clearHead.end(), value.data.begin()));
    // Exactly the caller's record as it stands after the call: nothing else is encrypted.
    EXPECT_EQ(serialFormOf(*stored), value.data);
    EXPECT_FALSE(holds(value.data, kSecret));
    EXPECT_TRUE(holds(value.data, "clear part"));

    // The inner layer is the buffer's own serial form, not its bare bytes.
    ZETProtectData protector;
    const ZETBuf decrypted = protector.decryptData(stored->protectedBlob, ZETBuf(""));
    EXPECT_EQ(serialFormOf(plainSecret), std::vector<BYTE>(decrypted.getData(), decrypted.getData() + decrypted.getSize()));
}

TEST_F(NetworkSettingsTest, NamesThatDifferOnlyInCaseAreSeparateProfiles)
{
    EXPECT_TRUE(ZETSettings::getNetworkSettingsKeys().empty());
    const std::wstring names[] = {L"Home", L"home", L"HOME", L"Caf\u00E9 \U0001F600 Net"};
    for (const std::wstring& name : names)
        ZETSettings::setNetworkSettings(name, makeProfile(name, "secret of " + std::to_string(name.size())));

    std::vector<std::wstring> expected(std::begin(names), std::end(names));
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, sortedKeys());
    for (const std::wstring& name : names) {
        Profile read = ZETSettings::getNetworkSettings(name);
        ASSERT_TRUE(read);
        EXPECT_EQ(name, read->profileText);
    }
    EXPECT_FALSE(ZETSettings::getNetworkSettings(L"hOME"));
}

TEST_F(NetworkSettingsTest, NamesThatDifferOnlyInANonAsciiCapitalShareOneValue)
{
    ZETSettings::setNetworkSettings(L"\u00C4rger", makeProfile(L"first", "1"));
    ZETSettings::setNetworkSettings(L"\u00E4rger", makeProfile(L"second", "2"));
    EXPECT_EQ(1u, ZETSettings::getNetworkSettingsKeys().size());
    EXPECT_EQ(L"second", ZETSettings::getNetworkSettings(L"\u00C4rger")->profileText);
}

TEST_F(NetworkSettingsTest, TheEmptyNameAndMissingNames)
{
    // The empty name gives default records without touching the registry.
    for (Profile empty : {ZETSettings::getNetworkSettings(L""), ZETSettings::deleteNetworkSettings(L"")}) {
        ASSERT_TRUE(empty);
        EXPECT_TRUE(empty->profileText.empty());
        EXPECT_TRUE(empty->protectedBlob.isEmpty());
    }
    EXPECT_FALSE(rawreg::keyExists(L"Software\\Orvane\\QXL"));

    EXPECT_FALSE(ZETSettings::getNetworkSettings(L"Never"));
    EXPECT_FALSE(ZETSettings::deleteNetworkSettings(L"Never"));
    EXPECT_TRUE(rawreg::keyExists(kNetworkSettings));  // reads create the key
    ZETSettings::setNetworkSettings(L"Null", Profile());
    Profile unnamed = makeProfile(L"x", kSecret);
    ZETSettings::setNetworkSettings(L"", unnamed);
    EXPECT_EQ(bufferOf(kSecret), unnamed->protectedBlob);
    EXPECT_TRUE(ZETSettings::getNetworkSettingsKeys().empty());
}

TEST_F(NetworkSettingsTest, DeleteHandsBackThePlainProfileOnce)
{
    ZETSettings::setNetworkSettings(L"Gone", makeProfile(L"gone", kSecret));
    ZETSettings::setNetworkSettings(L"Kept", makeProfile(L"kept", "other"));

    Profile removed = ZETSettings::deleteNetworkSettings(L"Gone");
    ASSERT_TRUE(removed);
    EXPECT_EQ(L"gone", removed->profileText);
    EXPECT_EQ(bufferOf(kSecret), removed->protectedBlob);
    EXPECT_FALSE(ZETSettings::deleteNetworkSettings(L"Gone"));
    EXPECT_FALSE(ZETSettings::getNetworkSettings(L"Gone"));
    EXPECT_EQ(std::vector<std::wstring>{L"Kept"}, ZETSettings::getNetworkSettingsKeys());
}

TEST_F(NetworkSettingsTest, StoredBytesThatAreNoProfileGivePartialOrDefaultRecords)
{
    plantValue(L"junk_0", {1, 2, 3});
    Profile junk = ZETSettings::getNetworkSettings(L"junk");
    ASSERT_TRUE(junk);
    EXPECT_TRUE(junk->profileText.empty());
    EXPECT_TRUE(junk->plainBlob.isEmpty());

    ZETNetworkSettings cut;
    cut.profileText = L"ab";
    cut.profileFlag4 = 9;
    std::vector<BYTE> bytes = serialFormOf(cut);
    bytes.resize(12);  // text and flags, no buffers
    plantValue(L"cut_0", bytes);
    Profile partial = ZETSettings::getNetworkSettings(L"cut");
    ASSERT_TRUE(partial);
    EXPECT_EQ(L"ab", partial->profileText);
    EXPECT_EQ(9, partial->profileFlag4);
    EXPECT_TRUE(partial->plainBlob.isEmpty());

    // A protected member that was never encrypted doesn't decrypt; the rest still reads.
    ZETNetworkSettings unencrypted;
    unencrypted.profileText = L"raw";
    unencrypted.protectedBlob = bufferOf("not a ciphertext");
    unencrypted.plainBlob = bufferOf("clear");
    plantValue(L"raw_0", serialFormOf(unencrypted));
    Profile raw = ZETSettings::getNetworkSettings(L"raw");
    ASSERT_TRUE(raw);
    EXPECT_EQ(L"raw", raw->profileText);
    EXPECT_EQ(bufferOf("clear"), raw->plainBlob);

    // Unreadable bytes are deleted all the same.
    EXPECT_TRUE(ZETSettings::deleteNetworkSettings(L"junk"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, rawreg::read(kNetworkSettings, L"junk_0").status);
}

TEST_F(NetworkSettingsTest, ForeignValueNamesAreListedOrFailTheListing)
{
    ZETSettings::setNetworkSettings(L"Lab_Net1", makeProfile(L"lab", kSecret));
    plantValue(L"NoUnderscore", {0});
    EXPECT_EQ((std::vector<std::wstring>{L"", L"Lab_Net1"}), sortedKeys());

    plantValue(L"short_", {0});
    EXPECT_THROW(ZETSettings::getNetworkSettingsKeys(), std::out_of_range);

    // The lock went with the exception: another thread gets through.
    std::promise<bool> done;
    std::future<bool> result = done.get_future();
    std::thread([&done] { done.set_value(bool(ZETSettings::getNetworkSettings(L"Lab_Net1"))); }).detach();
    ASSERT_EQ(std::future_status::ready, result.wait_for(std::chrono::seconds(10)));
    EXPECT_TRUE(result.get());
}

ZET_CHILD_SCENARIO(NetworkSettingsWrite)
{
    ZETSettings::setNetworkSettings(L"Shared", makeProfile(L"from child", args.at(0)));
    return 0;
}

ZET_CHILD_SCENARIO(NetworkSettingsRead)
{
    Profile read = ZETSettings::getNetworkSettings(L"Shared");
    return read && read->protectedBlob == bufferOf(args.at(0)) && read->profileText == L"from parent" ? 0 : 1;
}

TEST_F(NetworkSettingsTest, AProfileWrittenByOneProcessIsReadByAnother)
{
    ASSERT_EQ(0, zettest::runChild("NetworkSettingsWrite", {"child secret"}));
    Profile read = ZETSettings::getNetworkSettings(L"Shared");
    ASSERT_TRUE(read);
    EXPECT_EQ(L"from child", read->profileText);
    EXPECT_EQ(bufferOf("child secret"), read->protectedBlob);

    ZETSettings::setNetworkSettings(L"Shared", makeProfile(L"from parent", "parent secret"));
    EXPECT_EQ(0, zettest::runChild("NetworkSettingsRead", {"parent secret"}));
}

// Run by a user that may read the store but not write it: the key can't be opened with all
// access, so nothing is found and nothing is written. Exit codes name the broken expectation.
ZET_CHILD_SCENARIO(NetworkSettingsWithoutWriteRights)
{
    (void)args;
    if (!zettest::becomeUnprivileged())
        return 2;
    Profile profile = makeProfile(L"child", "child secret");
    ZETSettings::setNetworkSettings(L"Home", profile);
    if (profile->protectedBlob != bufferOf("child secret"))
        return 3;
    if (ZETSettings::getNetworkSettings(L"Home") || ZETSettings::deleteNetworkSettings(L"Home"))
        return 4;
    if (!ZETSettings::getNetworkSettingsKeys().empty())
        return 5;
    return 0;
}

TEST_F(NetworkSettingsTest, AStoreThatCantBeWrittenYieldsNothingAndChangesNothing)
{
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "this registry grants every process every right";
    ZETSettings::setNetworkSettings(L"Home", makeProfile(L"parent", kSecret));
    ASSERT_EQ(0, zettest::runChild("NetworkSettingsWithoutWriteRights"));
    Profile kept = ZETSettings::getNetworkSettings(L"Home");
    ASSERT_TRUE(kept);
    EXPECT_EQ(L"parent", kept->profileText);
    EXPECT_EQ(bufferOf(kSecret), kept->protectedBlob);
}

}  // namespace
