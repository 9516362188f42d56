// The eleven records: worked examples byte for byte, round trips of every member, what a cut
// value leaves, the member lists, and the copies each record allows.
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <type_traits>

#include "SerialTestBytes.h"
#include "zetsettings/serial/ZETAlertSettings.h"
#include "zetsettings/serial/ZETFallbackKeySettings.h"
#include "zetsettings/serial/ZETFallbackSettings.h"
#include "zetsettings/serial/ZETLoginData.h"
#include "zetsettings/serial/ZETNetworkSettings.h"
#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"
#include "zetsettings/serial/ZETOwnerToNetworkMap.h"
#include "zetsettings/serial/ZETPreferredNetEntry.h"
#include "zetsettings/serial/ZETPreferredNetworks.h"
#include "zetsettings/serial/ZETUserSettings.h"
#include "zetsettings/serial/ZETUserSettingsMap.h"
#include "zetsettings/components/ZETBuf.h"

using namespace zetserialtest;

// The copies each record has, and nothing more.
template <typename T, bool copies, bool assigns>
constexpr bool hasCopies()
{
    return std::is_default_constructible<T>::value && std::is_copy_constructible<T>::value == copies &&
           std::is_copy_assignable<T>::value == assigns && std::is_move_assignable<T>::value == assigns;
}
static_assert(hasCopies<ZETNetworkSettings, false, false>(), "built once, held by pointer");
static_assert(hasCopies<ZETFallbackKeySettings, true, false>(), "copied into and out of maps");
static_assert(hasCopies<ZETUserSettings, true, true>(), "a value");
static_assert(hasCopies<ZETUserSettingsMap, false, false>(), "local to one operation");
static_assert(hasCopies<ZETLoginData, false, false>(), "never leaves the store");
static_assert(hasCopies<ZETPreferredNetEntry, true, true>(), "a value");
static_assert(hasCopies<ZETPreferredNetworks, false, false>(), "held by pointer");
static_assert(hasCopies<ZETAlertSettings, false, false>(), "local to one operation");
static_assert(hasCopies<ZETFallbackSettings, true, true>(), "a value");
static_assert(hasCopies<ZETNetworkToFallbackSettingsMap, true, false>(), "value of the owner map");
static_assert(hasCopies<ZETOwnerToNetworkMap, false, false>(), "local to one operation");

namespace {

const Bytes kEmpty = hex("00 00 00 00");
const Bytes kAb = hex("04 00 00 00 61 00 62 00");

// Reads bytes into a fresh record and checks it consumed exactly them.
template <typename Record>
void expectReadsWhole(Record& record, const Bytes& bytes)
{
    EXPECT_EQ(record.deserialize(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
}

ZETFallbackSettings fallback(const wchar_t* owner, const wchar_t* network, const char* one, const char* two)
{
    ZETFallbackSettings settings;
    settings.owner = owner;
    settings.network = network;
    settings.fallbackBytes1 = one;
    settings.fallbackBytes2 = two;
    return settings;
}

ZETPreferredNetEntry entry(const wchar_t* name, unsigned char kind, const std::string& mac)
{
    ZETPreferredNetEntry result;
    result.netName = name;
    result.macAddress.assign(mac.data(), mac.size());
    result.entryFlag = 1;
    result.matchKind = kind;
    result.matchByte1 = 0xFE;
    result.matchByte2 = 0x7F;
    return result;
}

} // namespace

// ---- worked examples ---------------------------------------------------------------------

TEST(SerialRecordBytes, NetworkSettingsClearMembersThenTwoBuffers)
{
    ZETNetworkSettings settings;
    settings.profileText = L"ab";
    settings.profileFlag1 = 1;
    settings.profileFlag4 = 2;
    settings.protectedBlob.assign("\x01\x02\x03", 3);
    EXPECT_EQ(written(settings), kAb + hex("01 00 00 02") + counted("\x01\x02\x03") + kEmpty);
    EXPECT_EQ(written(ZETNetworkSettings()), kEmpty + hex("00 00 00 00") + kEmpty + kEmpty);
}

TEST(SerialRecordBytes, FallbackKeyMapWithOneEntry)
{
    ser_map<ser_wstring, ZETFallbackKeySettings> keys;
    ZETFallbackKeySettings key;
    key.keyText1 = L"ab";
    key.keyBytes = std::string("k\0y", 3);
    keys.emplace(ser_wstring(L"x"), key);
    EXPECT_EQ(written(keys), hex("01 00 00 00  02 00 00 00 78 00") + kAb + kEmpty + counted(std::string("k\0y", 3)));
    EXPECT_EQ(written(ser_map<ser_wstring, ZETFallbackKeySettings>()), kEmpty);
}

TEST(SerialRecordBytes, LoginDataWithoutPassword)
{
    ZETLoginData login;
    login.userName = L"ab";
    login.loginEnabled = 1;
    EXPECT_EQ(written(login), kAb + kEmpty + hex("01 00 00"));
    EXPECT_EQ(written(ZETLoginData()), hex("00 00 00 00 00 00 00 00 00 00 00"));
}

TEST(SerialRecordBytes, UserSettingsMapWithOneEntry)
{
    ZETUserSettingsMap map;
    map.users[ser_wstring(L"ab")] = ZETUserSettings();
    EXPECT_EQ(written(map), hex("01 00 00 00") + kAb + kEmpty + counted(""));
    EXPECT_EQ(written(ZETUserSettingsMap()), kEmpty);
}

TEST(SerialRecordBytes, PreferredNetworksWithOneEntry)
{
    ZETPreferredNetworks networks;
    networks.position = 1;
    ZETPreferredNetEntry first;
    first.netName = L"ab";
    first.macAddress.assign("\x00\x11\x22\x33\x44\x55", 6);
    first.matchKind = 3;
    networks.entries.push_back(first);
    EXPECT_EQ(written(networks), hex("01  01 00 00 00") + kAb + hex("06 00 00 00 00 11 22 33 44 55") + hex("00 03 00 00"));
    EXPECT_EQ(written(ZETPreferredNetworks()), hex("00 00 00 00 00"));
    EXPECT_EQ(written(ZETPreferredNetEntry()), kEmpty + counted("") + hex("00 00 00 00"));
}

TEST(SerialRecordBytes, AlertSettingsInUnsignedKeyOrder)
{
    ZETAlertSettings alerts;
    alerts.states[7] = 0;
    alerts.states[2] = 1;
    EXPECT_EQ(written(alerts), hex("02 00 00 00  02 00 00 00 01 00 00 00  07 00 00 00 00 00 00 00"));
    // Alert -1 keeps its 32 bits and so sorts behind 7.
    alerts.states[static_cast<unsigned int>(-1)] = 0;
    EXPECT_EQ(written(alerts), hex("03 00 00 00  02 00 00 00 01 00 00 00  07 00 00 00 00 00 00 00"
                                   "  FF FF FF FF 00 00 00 00"));
}

TEST(SerialRecordBytes, FallbackDatabaseRecords)
{
    EXPECT_EQ(written(fallback(L"ab", L"n", "", "")),
              kAb + hex("02 00 00 00 6E 00") + counted("") + counted(""));
    EXPECT_EQ(written(ZETFallbackSettings()), kEmpty + kEmpty + counted("") + counted(""));

    ZETNetworkToFallbackSettingsMap networks;
    networks.owner = L"ab";
    EXPECT_EQ(written(networks), kAb + kEmpty);

    ZETOwnerToNetworkMap owners;
    networks.networks.emplace(ser_wstring(L"n"), fallback(L"ab", L"n", "1", ""));
    owners.owners.emplace(ser_wstring(L"ab"), networks);
    EXPECT_EQ(written(owners), hex("01 00 00 00") + kAb + kAb + hex("01 00 00 00  02 00 00 00 6E 00") + kAb +
                                   hex("02 00 00 00 6E 00") + counted("1") + counted(""));
}

// ---- round trips -----------------------------------------------------------------------

TEST(SerialRecordRoundTrip, NetworkSettingsCarriesEveryFlagValueAndBothBuffers)
{
    for (unsigned flag : {0u, 1u, 128u, 255u}) {
        ZETNetworkSettings settings;
        settings.profileText = L"profile \x00e9";
        settings.profileFlag1 = static_cast<unsigned char>(flag);
        settings.profileFlag2 = static_cast<unsigned char>(255 - flag);
        settings.profileFlag3 = 3;
        settings.profileFlag4 = static_cast<unsigned char>(flag ^ 0x5A);
        settings.protectedBlob.assign("\0cipher\xFF", 8);
        settings.plainBlob = ZETBuf("plain");
        const Bytes bytes = written(settings);
        ZETNetworkSettings back;
        expectReadsWhole(back, bytes);
        EXPECT_EQ(back.profileText, settings.profileText);
        EXPECT_EQ(back.profileFlag1.value, flag);
        EXPECT_EQ(back.profileFlag2.value, 255 - flag);
        EXPECT_EQ(back.profileFlag3.value, 3);
        EXPECT_EQ(back.profileFlag4.value, flag ^ 0x5A);
        EXPECT_EQ(back.protectedBlob, settings.protectedBlob);
        EXPECT_EQ(back.plainBlob, settings.plainBlob);
    }
}

TEST(SerialRecordRoundTrip, FallbackKeyMapKeepsCaseDistinctKeysAndEmptyEntries)
{
    ser_map<ser_wstring, ZETFallbackKeySettings> keys;
    ZETFallbackKeySettings full;
    full.keyText1 = L"one";
    full.keyText2 = L"two";
    full.keyBytes = std::string("\x00\x01\xFF", 3);
    keys.emplace(ser_wstring(L"Net"), full);
    keys.emplace(ser_wstring(L"net"), ZETFallbackKeySettings());
    const Bytes bytes = written(keys);
    ser_map<ser_wstring, ZETFallbackKeySettings> back;
    expectReadsWhole(back, bytes);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back.at(ser_wstring(L"Net")).keyText2, L"two");
    EXPECT_EQ(back.at(ser_wstring(L"Net")).keyBytes, full.keyBytes);
    EXPECT_TRUE(back.at(ser_wstring(L"net")).keyText1.empty());
}

TEST(SerialRecordRoundTrip, UserAndLoginRecords)
{
    ZETUserSettingsMap users;
    ZETUserSettings alice;
    alice.userText = L"text";
    alice.userBytes = "bytes";
    users.users[ser_wstring(L"alice")] = alice;
    users.users[ser_wstring(L"Alice")] = ZETUserSettings();
    ZETUserSettingsMap usersBack;
    expectReadsWhole(usersBack, written(users));
    ASSERT_EQ(usersBack.users.size(), 2u);
    EXPECT_EQ(usersBack.users.at(ser_wstring(L"alice")).userBytes, "bytes");
    EXPECT_EQ(usersBack.users.at(ser_wstring(L"alice")).userText, L"text");

    ZETLoginData login;
    login.userName = L"user";
    login.password = L"p\x00e4ss";
    login.loginEnabled = 1;
    login.keepPassword = 1;
    login.dependentFlag = 7;  // a byte other than 0 or 1 stays as it is
    ZETLoginData loginBack;
    expectReadsWhole(loginBack, written(login));
    EXPECT_EQ(loginBack.userName, L"user");
    EXPECT_EQ(loginBack.password, login.password);
    EXPECT_EQ(loginBack.keepPassword.value, 1);
    EXPECT_EQ(loginBack.dependentFlag.value, 7);
}

TEST(SerialRecordRoundTrip, PreferredNetworksKeepsOrderAndEveryEntryMember)
{
    ZETPreferredNetworks networks;
    networks.position = 200;  // not brought down here: the bytes stand as they are
    networks.entries.push_back(entry(L"home", 3, std::string("\x00\x1b\x2c\x3d\x4e\x5f", 6)));
    networks.entries.push_back(entry(L"", 0, ""));
    networks.entries.push_back(entry(L"home", 1, "\x01"));
    ZETPreferredNetworks back;
    expectReadsWhole(back, written(networks));
    EXPECT_EQ(back.position.value, 200);
    ASSERT_EQ(back.entries.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back.entries[i].netName, networks.entries[i].netName);
        EXPECT_EQ(back.entries[i].macAddress, networks.entries[i].macAddress);
        EXPECT_EQ(back.entries[i].entryFlag.value, 1);
        EXPECT_EQ(back.entries[i].matchKind.value, networks.entries[i].matchKind.value);
        EXPECT_EQ(back.entries[i].matchByte1.value, 0xFE);
        EXPECT_EQ(back.entries[i].matchByte2.value, 0x7F);
    }
}

TEST(SerialRecordRoundTrip, AlertValueOtherThanOneOrZeroStays)
{
    ZETAlertSettings alerts;
    expectReadsWhole(alerts, hex("01 00 00 00  03 00 00 00 02 00 00 00"));
    EXPECT_EQ(alerts.states.at(3).value, 2u);
}

TEST(SerialRecordRoundTrip, OwnerMapNestsTwoLevels)
{
    ZETOwnerToNetworkMap owners;
    for (const wchar_t* owner : {L"bob", L"alice"}) {
        ZETNetworkToFallbackSettingsMap networks;
        networks.owner = owner;
        for (const wchar_t* network : {L"Net", L"net", L"x"})
            networks.networks.emplace(ser_wstring(network), fallback(owner, network, "a", "bb"));
        owners.owners.emplace(ser_wstring(owner), networks);
    }
    const Bytes bytes = written(owners);
    ZETOwnerToNetworkMap back;
    expectReadsWhole(back, bytes);
    EXPECT_EQ(written(back), bytes);
    EXPECT_EQ(back.owners.at(ser_wstring(L"bob")).networks.at(ser_wstring(L"Net")).owner, L"bob");
    EXPECT_EQ(back.owners.at(ser_wstring(L"alice")).networks.size(), 3u);
}

// ---- cut and hostile values ----------------------------------------------------------

// Every cut of a complete form fails, and the form itself reads whole.
template <typename Record>
void expectEveryCutFails(const Bytes& bytes)
{
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(cut));
        Record record;
        EXPECT_EQ(record.deserialize(part.data(), static_cast<int>(part.size())), 0) << "cut at " << cut;
    }
    Record record;
    expectReadsWhole(record, bytes);
}

TEST(SerialRecordCut, EveryRecordFailsOnEveryCutOfItsForm)
{
    ZETNetworkSettings network;
    network.profileText = L"p";
    network.protectedBlob = ZETBuf("c");
    expectEveryCutFails<ZETNetworkSettings>(written(network));
    expectEveryCutFails<ZETFallbackKeySettings>(kAb + kAb + counted("k"));
    expectEveryCutFails<ZETUserSettings>(kAb + counted("u"));
    expectEveryCutFails<ZETUserSettingsMap>(hex("01 00 00 00") + kAb + kAb + counted("u"));
    expectEveryCutFails<ZETLoginData>(kAb + kAb + hex("01 01 01"));
    expectEveryCutFails<ZETPreferredNetEntry>(kAb + counted("m") + hex("01 02 03 04"));
    expectEveryCutFails<ZETPreferredNetworks>(hex("01 01 00 00 00") + kAb + counted("") + hex("00 03 00 00"));
    expectEveryCutFails<ZETAlertSettings>(hex("01 00 00 00 05 00 00 00 01 00 00 00"));
    expectEveryCutFails<ZETFallbackSettings>(kAb + kAb + counted("1") + counted("2"));
    expectEveryCutFails<ZETNetworkToFallbackSettingsMap>(kAb + hex("01 00 00 00") + kAb + kAb + kAb + kEmpty + kEmpty);
    expectEveryCutFails<ZETOwnerToNetworkMap>(hex("01 00 00 00") + kAb + kAb + kEmpty);
}

TEST(SerialRecordCut, CutLoginKeepsWhatWasReadAndDefaultsTheRest)
{
    ZETLoginData login;
    EXPECT_EQ(login.deserialize(nullptr, 0), 0);
    const Bytes cut = kAb + hex("02 00 00 00 78 00 01");  // ends after loginEnabled
    EXPECT_EQ(login.deserialize(cut.data(), static_cast<int>(cut.size())), 0);
    EXPECT_EQ(login.userName, L"ab");
    EXPECT_EQ(login.password, L"x");
    EXPECT_EQ(login.loginEnabled.value, 1);
    EXPECT_EQ(login.keepPassword.value, 0);
    EXPECT_EQ(login.dependentFlag.value, 0);
}

TEST(SerialRecordCut, PreferredListCutInsideAnEntryLosesOnlyThatEntry)
{
    ZETPreferredNetworks networks;
    networks.position = 2;
    networks.entries.push_back(entry(L"a", 0, ""));
    networks.entries.push_back(entry(L"b", 0, ""));
    Bytes bytes = written(networks);
    bytes.resize(bytes.size() - 2);
    ZETPreferredNetworks back;
    EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), 0);
    EXPECT_EQ(back.position.value, 2);
    ASSERT_EQ(back.entries.size(), 1u);
    EXPECT_EQ(back.entries[0].netName, L"a");
}

TEST(SerialRecordCut, LongerFormLeavesATailThatIsIgnored)
{
    ZETFallbackSettings settings;
    const Bytes bytes = written(fallback(L"o", L"n", "x", "y")) + hex("01 02 03");
    EXPECT_EQ(settings.deserialize(bytes.data(), static_cast<int>(bytes.size())),
              static_cast<int>(bytes.size()) - 3);
    EXPECT_EQ(settings.fallbackBytes2, "y");
}

// ---- member lists --------------------------------------------------------------------

namespace {

template <typename Record>
void expectMemberList(int classNumber, std::initializer_list<const ZETSerializeInterface*> members,
                      const Record& record)
{
    const ZETSerMemberList& list = record.getMemberList();
    EXPECT_EQ(&list, &Record().getMemberList()) << "one list per class";
    EXPECT_EQ(list.classNumber, classNumber);
    ASSERT_EQ(list.positions.size(), members.size());
    const char* base = reinterpret_cast<const char*>(static_cast<const ZETSerializeClass*>(&record));
    std::size_t i = 0;
    for (const ZETSerializeInterface* member : members)
        EXPECT_EQ(base + list.positions[i++], reinterpret_cast<const char*>(member)) << "member " << i;
}

} // namespace

TEST(SerialRecordMembers, EachClassListsItsMembersInWireOrderWithItsNumber)
{
    ZETUserSettings u;
    expectMemberList(1, {&u.userText, &u.userBytes}, u);
    ZETUserSettingsMap um;
    expectMemberList(2, {&um.users}, um);
    ZETNetworkSettings n;
    expectMemberList(3, {&n.profileText, &n.profileFlag1, &n.profileFlag2, &n.profileFlag3, &n.profileFlag4,
                         &n.protectedBlob, &n.plainBlob}, n);
    ZETFallbackSettings f;
    expectMemberList(5, {&f.owner, &f.network, &f.fallbackBytes1, &f.fallbackBytes2}, f);
    ZETNetworkToFallbackSettingsMap nf;
    expectMemberList(6, {&nf.owner, &nf.networks}, nf);
    ZETFallbackKeySettings k;
    expectMemberList(7, {&k.keyText1, &k.keyText2, &k.keyBytes}, k);
    ZETOwnerToNetworkMap o;
    expectMemberList(9, {&o.owners}, o);
    ZETLoginData l;
    expectMemberList(10, {&l.userName, &l.password, &l.loginEnabled, &l.keepPassword, &l.dependentFlag}, l);
    ZETPreferredNetEntry e;
    expectMemberList(13, {&e.netName, &e.macAddress, &e.entryFlag, &e.matchKind, &e.matchByte1, &e.matchByte2}, e);
    ZETPreferredNetworks p;
    expectMemberList(14, {&p.position, &p.entries}, p);
    ZETAlertSettings a;
    expectMemberList(15, {&a.states}, a);
}

// ---- copies ----------------------------------------------------------------------------

TEST(SerialRecordCopy, CopiesAreDeepAndCarryEveryMember)
{
    ZETPreferredNetEntry original = entry(L"net", 3, "\x01\x02");
    ZETPreferredNetEntry copy(original);
    ZETPreferredNetEntry assigned;
    assigned = original;
    for (const ZETPreferredNetEntry* other : {&copy, &assigned})
        EXPECT_EQ(written(*other), written(original));

    ZETFallbackSettings settings = fallback(L"o", L"n", "1", "2");
    ZETFallbackSettings settingsAssigned;
    settingsAssigned = settings;
    EXPECT_EQ(written(settingsAssigned), written(settings));

    ZETUserSettings user;
    user.userText = L"first";
    ZETUserSettings userCopy(user);
    userCopy.userText = L"changed";
    EXPECT_EQ(user.userText, L"first");

    ZETNetworkToFallbackSettingsMap networks;
    networks.networks.emplace(ser_wstring(L"n"), fallback(L"o", L"n", "1", ""));
    ZETNetworkToFallbackSettingsMap networksCopy(networks);
    networksCopy.networks.at(ser_wstring(L"n")).fallbackBytes1 = "changed";
    EXPECT_EQ(networks.networks.at(ser_wstring(L"n")).fallbackBytes1, "1");
}

// ---- buffers as a whole ------------------------------------------------------------------

TEST(SerialRecordBuffer, ToAndFromAByteBufferMatchesTheDirectForm)
{
    ZETNetworkSettings settings;
    settings.profileText = L"t";
    settings.plainBlob = ZETBuf("plain");
    ZETBuf buffer;
    const ZETNetworkSettings& view = settings;
    EXPECT_EQ(view.serializeToBuf(buffer), settings.getSerLength());
    EXPECT_EQ(Bytes(buffer.getData(), buffer.getData() + buffer.getSize()), written(settings));

    // A record written into one of its own members: the bytes are those from before.
    const Bytes before = written(settings);
    settings.serializeToBuf(settings.protectedBlob);
    EXPECT_EQ(Bytes(settings.protectedBlob.getData(), settings.protectedBlob.getData() + settings.protectedBlob.getSize()),
              before);

    ZETNetworkSettings back;
    EXPECT_EQ(back.deserializeFromBuf(buffer), static_cast<int>(buffer.getSize()));
    EXPECT_EQ(back.plainBlob, ZETBuf("plain"));
}
