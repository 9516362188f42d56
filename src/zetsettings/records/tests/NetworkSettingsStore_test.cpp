#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;
using zetserialtest::bufferOf;

namespace {

typedef boost::shared_ptr<ZETNetworkSettings> Profile;

const std::wstring kNetworkSettings = kBase + L"\\NetworkSettings";
const std::string kSecret = "correct horse battery staple";

Profile makeProfile(const std::wstring& text, const std::string& secret)
{
    return zetserialtest::networkRecord(text, 1, 0, 255, 2, secret, "clear part");
}

class NetworkSettingsTest : public zettest::RegistryTest {};

TEST_F(NetworkSettingsTest, AProfileComesBackPlainWhileOnlyItsCiphertextIsStored)
{
    Profile stored = makeProfile(L"home profile", kSecret);
    ZETSettings::setNetworkSettings(L"MyWLAN", stored);

    EXPECT_EQ(formOf(makeProfile(L"home profile", kSecret)), formOf(ZETSettings::getNetworkSettings(L"MyWLAN")));

    // The caller's record keeps the ciphertext, and the value is exactly that record: the
    // clear members around the encrypted serial form of the secret buffer.
    EXPECT_EQ(plainForm(*stored), rawValue(kNetworkSettings, L"MyWLAN_BC"));
    EXPECT_EQ(plainForm(bufferOf(kSecret)), decrypt(stored->protectedBlob.bytes()));
    // Natively every byte of the store is searched, else the value's.
    const std::string searched = zettest::TestRegistry::isPortable() ? rawStoreBytes(registry)
                                                                      : rawValue(kNetworkSettings, L"MyWLAN_BC");
    EXPECT_EQ(std::string::npos, searched.find(kSecret));

    // The same record with plain content put back replaces the value.
    stored->protectedBlob = bufferOf("new secret");
    ZETSettings::setNetworkSettings(L"MyWLAN", stored);
    EXPECT_EQ(std::vector<std::wstring>{L"MyWLAN"}, ZETSettings::getNetworkSettingsKeys());

    // Delete hands back the plain profile, once.
    EXPECT_EQ(formOf(makeProfile(L"home profile", "new secret")),
              formOf(ZETSettings::deleteNetworkSettings(L"MyWLAN")));
    EXPECT_FALSE(ZETSettings::deleteNetworkSettings(L"MyWLAN"));
    EXPECT_TRUE(ZETSettings::getNetworkSettingsKeys().empty());
}

// Only ASCII capitals are told apart: a non-ASCII capital falls on its lower-case twin's value.
TEST_F(NetworkSettingsTest, NamesThatDifferOnlyInCaseAreSeparateProfiles)
{
    const std::wstring names[] = {L"Home", L"home", L"HOME", L"Caf\u00E9 \U0001F600 Net", L"\u00C4rger"};
    for (const std::wstring& name : names)
        ZETSettings::setNetworkSettings(name, makeProfile(name, "secret"));
    ZETSettings::setNetworkSettings(L"\u00E4rger", makeProfile(L"replaced", "secret"));

    EXPECT_EQ(zettest::sorted({std::begin(names), std::end(names)}),
              zettest::sorted(ZETSettings::getNetworkSettingsKeys()));
    for (const std::wstring& name : names)
        EXPECT_EQ(formOf(makeProfile(name == L"\u00C4rger" ? L"replaced" : name, "secret")),
                  formOf(ZETSettings::getNetworkSettings(name)));
    EXPECT_FALSE(ZETSettings::getNetworkSettings(L"hOME"));
}

TEST_F(NetworkSettingsTest, EmptyNamesNullRecordsAndMissingProfiles)
{
    // The empty name gives default records without touching the registry.
    EXPECT_EQ(plainForm(ZETNetworkSettings()), formOf(ZETSettings::getNetworkSettings(L"")));
    EXPECT_EQ(plainForm(ZETNetworkSettings()), formOf(ZETSettings::deleteNetworkSettings(L"")));
    Profile unnamed = makeProfile(L"x", kSecret);
    ZETSettings::setNetworkSettings(L"", unnamed);
    EXPECT_EQ(bufferOf(kSecret), unnamed->protectedBlob);
    ZETSettings::setNetworkSettings(L"Null", Profile());
    EXPECT_FALSE(keyExists(kBase));

    EXPECT_FALSE(ZETSettings::getNetworkSettings(L"Never"));
    EXPECT_FALSE(ZETSettings::deleteNetworkSettings(L"Never"));
    EXPECT_TRUE(keyExists(kNetworkSettings));  // reads create the key
}

TEST_F(NetworkSettingsTest, StoredBytesThatAreNoProfileGivePartialOrDefaultRecords)
{
    writeRaw(kNetworkSettings, L"junk_0", "\x01\x02\x03");
    EXPECT_EQ(plainForm(ZETNetworkSettings()), formOf(ZETSettings::getNetworkSettings(L"junk")));

    // Text and flags only: the buffers stay at their defaults.
    const Profile cut = zetserialtest::networkRecord(L"ab", 0, 0, 0, 9);
    writeRaw(kNetworkSettings, L"cut_0", plainForm(*cut).substr(0, 12));
    EXPECT_EQ(plainForm(*cut), formOf(ZETSettings::getNetworkSettings(L"cut")));

    // A protected member that was never encrypted doesn't decrypt; the rest still reads.
    writeRaw(kNetworkSettings, L"raw_0", plainForm(*makeProfile(L"raw", "not a ciphertext")));
    EXPECT_EQ(formOf(makeProfile(L"raw", "")), formOf(ZETSettings::getNetworkSettings(L"raw")));

    // Unreadable bytes are deleted all the same.
    EXPECT_TRUE(ZETSettings::deleteNetworkSettings(L"junk"));
    EXPECT_FALSE(hasValue(kNetworkSettings, L"junk_0"));
}

// Made under another key or tampered with: here a true ciphertext with its last byte changed.
TEST_F(NetworkSettingsTest, ASecretThatDoesntDecryptComesBackEmptyNeverAsItsCiphertext)
{
    Profile tampered = makeProfile(L"tampered", kSecret);
    std::string cipher = ZETProtectData().encryptData(bufferOf(plainForm(tampered->protectedBlob)), ZETBuf("")).bytes();
    ASSERT_FALSE(cipher.empty());
    cipher.back() ^= 0x01;
    tampered->protectedBlob = bufferOf(cipher);
    writeRaw(kNetworkSettings, L"tampered_00", plainForm(*tampered));

    const std::string expected = formOf(makeProfile(L"tampered", ""));
    EXPECT_EQ(expected, formOf(ZETSettings::getNetworkSettings(L"tampered")));
    EXPECT_EQ(expected, formOf(ZETSettings::deleteNetworkSettings(L"tampered")));
}

TEST_F(NetworkSettingsTest, ForeignValueNamesAreListedOrFailTheListing)
{
    ZETSettings::setNetworkSettings(L"Lab_Net1", makeProfile(L"lab", kSecret));
    writeRaw(kNetworkSettings, L"NoUnderscore", "x");
    EXPECT_EQ((std::vector<std::wstring>{L"", L"Lab_Net1"}), zettest::sorted(ZETSettings::getNetworkSettingsKeys()));

    writeRaw(kNetworkSettings, L"short_", "x");
    EXPECT_THROW(ZETSettings::getNetworkSettingsKeys(), std::out_of_range);
    // The lock went with the exception: another thread gets through (detached, so that a lock
    // left held fails the test instead of hanging it).
    auto done = std::make_shared<std::promise<bool>>();
    std::future<bool> read = done->get_future();
    std::thread([done] { done->set_value(bool(ZETSettings::getNetworkSettings(L"Lab_Net1"))); }).detach();
    ASSERT_EQ(std::future_status::ready, read.wait_for(std::chrono::seconds(10)));
    EXPECT_TRUE(read.get());
}

ZET_CHILD_SCENARIO(NetworkSettingsWrite)
{
    ZETSettings::setNetworkSettings(L"Shared", makeProfile(L"from child", args.at(0)));
    return 0;
}

TEST_F(NetworkSettingsTest, AProfileWrittenByOneProcessIsReadByAnother)
{
    ASSERT_EQ(0, zettest::runChild("NetworkSettingsWrite", {"child secret"}));
    EXPECT_EQ(formOf(makeProfile(L"from child", "child secret")), formOf(ZETSettings::getNetworkSettings(L"Shared")));
}

// Run by a user that may read the store but not write it: the key can't be opened with all
// access, so nothing is found and nothing is written. Exit codes name the broken expectation.
ZET_CHILD_SCENARIO(NetworkSettingsWithoutWriteRights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    Profile profile = makeProfile(L"child", "child secret");
    ZETSettings::setNetworkSettings(L"Home", profile);
    if (profile->protectedBlob != bufferOf("child secret"))
        return 3;
    if (ZETSettings::getNetworkSettings(L"Home") || ZETSettings::deleteNetworkSettings(L"Home"))
        return 4;
    return ZETSettings::getNetworkSettingsKeys().empty() ? 0 : 5;
}

TEST_F(NetworkSettingsTest, AStoreThatCantBeWrittenYieldsNothingAndChangesNothing)
{
    ZET_SKIP_UNLESS_RIGHTS_CAN_DROP();
    ZETSettings::setNetworkSettings(L"Home", makeProfile(L"parent", kSecret));
    ASSERT_EQ(0, zettest::runChild("NetworkSettingsWithoutWriteRights"));
    EXPECT_EQ(formOf(makeProfile(L"parent", kSecret)), formOf(ZETSettings::getNetworkSettings(L"Home")));
}

}  // namespace
