// The eleven records: worked examples byte for byte, round trips of every member, what a cut
// value leaves, and deep copies.
#include "SerialTestBytes.h"
#include "zetsettings/serial/ZETAlertSettings.h"
#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"
#include "zetsettings/serial/ZETOwnerToNetworkMap.h"
#include "zetsettings/serial/ZETPreferredNetworks.h"
#include "zetsettings/serial/ZETUserSettings.h"
#include "zetsettings/serial/ZETUserSettingsMap.h"

using namespace zetserialtest;

namespace {

using FallbackKeys = ser_map<ser_wstring, ZETFallbackKeySettings>;

const Bytes kEmpty = hex("00 00 00 00");
const Bytes kAb = hex("04 00 00 00 61 00 62 00");

// Every cut of a record's form fails; the whole form reads back every member, so that the
// record writes the same bytes again.
template <typename Record>
void expectRoundTripAndEveryCutFails(const Record& record)
{
    const Bytes bytes = written(record);
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        Record part;
        EXPECT_EQ(part.deserialize(bytes.data(), static_cast<int>(cut)), 0) << "cut at " << cut;
    }
    Record back;
    EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
    EXPECT_EQ(written(back), bytes);
}

TEST(SerialRecordBytes, NetworkLoginAndUserRecords)
{
    EXPECT_EQ(written(*networkRecord(L"ab", 1, 0, 0, 2, "\x01\x02\x03")),
              kAb + hex("01 00 00 02") + counted("\x01\x02\x03") + kEmpty);
    EXPECT_EQ(written(ZETNetworkSettings()), kEmpty + hex("00 00 00 00") + kEmpty + kEmpty);

    FallbackKeys keys;
    keys.emplace(ser_wstring(L"x"), fallbackKey(L"ab", L"", std::string("k\0y", 3)));
    EXPECT_EQ(written(keys), hex("01 00 00 00  02 00 00 00 78 00") + kAb + kEmpty + counted(std::string("k\0y", 3)));

    EXPECT_EQ(written(*loginRecord(L"ab", L"", 1, 0, 0)), kAb + kEmpty + hex("01 00 00"));

    ZETUserSettingsMap users;
    users.users[ser_wstring(L"ab")] = ZETUserSettings();
    EXPECT_EQ(written(users), hex("01 00 00 00") + kAb + kEmpty + counted(""));
}

TEST(SerialRecordBytes, PreferredNetworksAndAlerts)
{
    ZETPreferredNetworks networks;
    networks.position = 1;
    networks.entries.push_back(entry(L"ab", 3, 0, 0, std::string("\x00\x11\x22\x33\x44\x55", 6)));
    EXPECT_EQ(written(networks), hex("01  01 00 00 00") + kAb + hex("06 00 00 00 00 11 22 33 44 55") + hex("00 03 00 00"));
    EXPECT_EQ(written(ZETPreferredNetworks()), hex("00 00 00 00 00"));

    // Alert -1 keeps its 32 bits and so sorts behind 7.
    ZETAlertSettings alerts;
    alerts.states[7] = 0;
    alerts.states[static_cast<unsigned int>(-1)] = 0;
    alerts.states[2] = 1;
    EXPECT_EQ(written(alerts), hex("03 00 00 00  02 00 00 00 01 00 00 00  07 00 00 00 00 00 00 00"
                                   "  FF FF FF FF 00 00 00 00"));
}

TEST(SerialRecordBytes, FallbackDatabaseRecords)
{
    EXPECT_EQ(written(fallbackRecord(L"ab", L"n")), kAb + hex("02 00 00 00 6E 00") + counted("") + counted(""));

    ZETNetworkToFallbackSettingsMap networks;
    networks.owner = L"ab";
    EXPECT_EQ(written(networks), kAb + kEmpty);

    ZETOwnerToNetworkMap owners;
    networks.networks.emplace(ser_wstring(L"n"), fallbackRecord(L"ab", L"n", "1", ""));
    owners.owners.emplace(ser_wstring(L"ab"), networks);
    EXPECT_EQ(written(owners), hex("01 00 00 00") + kAb + kAb + hex("01 00 00 00  02 00 00 00 6E 00") + kAb +
                                   hex("02 00 00 00 6E 00") + counted("1") + counted(""));
}

TEST(SerialRecordRoundTrip, EveryRecordReadsBackEveryMemberAndFailsOnEveryCut)
{
    const std::string cipher("\0cipher\xFF", 8);
    expectRoundTripAndEveryCutFails(*networkRecord(L"profile \x00e9", 0x80, 0xFF, 3, 0x5A, cipher, "plain"));

    FallbackKeys keys;
    keys.emplace(ser_wstring(L"Net"), fallbackKey(L"one", L"two", std::string("\x00\x01\xFF", 3)));
    keys.emplace(ser_wstring(L"net"), ZETFallbackKeySettings());
    expectRoundTripAndEveryCutFails(keys);

    ZETUserSettingsMap users;
    users.users[ser_wstring(L"alice")] = *userRecord(L"text", "bytes");
    users.users[ser_wstring(L"Alice")] = ZETUserSettings();
    expectRoundTripAndEveryCutFails(users);

    // A flag byte other than 0 or 1 stays as it is.
    expectRoundTripAndEveryCutFails(*loginRecord(L"user", L"p\x00e4ss", 1, 1, 7));

    ZETPreferredNetworks networks;
    networks.position = 200;  // not brought down here: the bytes stand as they are
    networks.entries.push_back(entry(L"home", 3, 0xFE, 0x7F, std::string("\x00\x1b\x2c\x3d\x4e\x5f", 6), 1));
    networks.entries.push_back(entry(L""));
    networks.entries.push_back(entry(L"home", 1, 0, 0, "\x01"));
    expectRoundTripAndEveryCutFails(networks);

    ZETAlertSettings alerts;
    alerts.states[3] = 2;
    alerts.states[9] = 0;
    expectRoundTripAndEveryCutFails(alerts);

    ZETOwnerToNetworkMap owners;
    for (const wchar_t* owner : {L"bob", L"alice"}) {
        ZETNetworkToFallbackSettingsMap ownNetworks;
        ownNetworks.owner = owner;
        for (const wchar_t* network : {L"Net", L"net", L"x"})
            ownNetworks.networks.emplace(ser_wstring(network), fallbackRecord(owner, network, "a", "bb"));
        owners.owners.emplace(ser_wstring(owner), ownNetworks);
    }
    expectRoundTripAndEveryCutFails(owners);
}

TEST(SerialRecordCut, ACutRecordKeepsWhatWasReadAndATailIsIgnored)
{
    ZETLoginData login;
    const Bytes cut = kAb + hex("02 00 00 00 78 00 01");  // ends after loginEnabled
    EXPECT_EQ(login.deserialize(cut.data(), static_cast<int>(cut.size())), 0);
    EXPECT_EQ(login.password, L"x");
    EXPECT_EQ(login.loginEnabled.value, 1);
    EXPECT_EQ(login.keepPassword.value, 0);

    ZETPreferredNetworks networks;
    networks.position = 2;
    networks.entries.push_back(entry(L"a", 0, 0xFE, 0x7F, "", 1));
    networks.entries.push_back(entry(L"b"));
    Bytes bytes = written(networks);
    bytes.resize(bytes.size() - 2);
    ZETPreferredNetworks back;
    EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), 0);
    networks.entries.pop_back();  // position 2 and the whole first entry are kept
    EXPECT_EQ(written(back), written(networks));

    ZETFallbackSettings settings;
    const Bytes longer = written(fallbackRecord(L"o", L"n", "x", "y")) + hex("01 02 03");
    EXPECT_EQ(settings.deserialize(longer.data(), static_cast<int>(longer.size())), static_cast<int>(longer.size()) - 3);
    EXPECT_EQ(settings.fallbackBytes2, "y");
}

TEST(SerialRecordCopy, CopiesAreDeepAndCarryEveryMember)
{
    const ZETPreferredNetEntry original = entry(L"net", 3, 0xFE, 0x7F, "\x01\x02", 1);
    ZETPreferredNetEntry assigned;
    assigned = original;
    EXPECT_EQ(written(assigned), written(original));

    ZETNetworkToFallbackSettingsMap networks;
    networks.networks.emplace(ser_wstring(L"n"), fallbackRecord(L"o", L"n", "1", ""));
    ZETNetworkToFallbackSettingsMap copy(networks);
    EXPECT_EQ(written(copy), written(networks));
    copy.networks.at(ser_wstring(L"n")).fallbackBytes1 = "changed";
    EXPECT_EQ(networks.networks.at(ser_wstring(L"n")).fallbackBytes1, "1");
}

TEST(SerialRecordBuffer, ToAndFromAByteBufferMatchesTheDirectForm)
{
    const auto settings = networkRecord(L"t", 0, 0, 0, 0, "", "plain");
    const Bytes direct = written(*settings);
    ZETBuf buffer;
    const ZETNetworkSettings& view = *settings;
    EXPECT_EQ(view.serializeToBuf(buffer), settings->getSerLength());
    EXPECT_EQ(bytesOf(buffer), direct);

    // A record written into one of its own members: the bytes are those from before.
    settings->serializeToBuf(settings->protectedBlob);
    EXPECT_EQ(bytesOf(settings->protectedBlob), direct);

    ZETNetworkSettings back;
    EXPECT_EQ(back.deserializeFromBuf(buffer), static_cast<int>(buffer.getSize()));
    EXPECT_EQ(back.plainBlob, ZETBuf("plain"));
}

} // namespace
