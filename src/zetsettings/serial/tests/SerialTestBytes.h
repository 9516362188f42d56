// Byte helpers of the serialization tests: wire forms spelled as hex, and a writer that
// checks getSerLength against what serialize really writes. Also the record builders that the
// tests of the stores share with them.
#ifndef ZETSETTINGS_SERIAL_TESTS_SERIALTESTBYTES_H
#define ZETSETTINGS_SERIAL_TESTS_SERIALTESTBYTES_H

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "zetsettings/components/ZETBuf.h"
#include "zetsettings/components/ZETSerializeInterface.h"
#include "zetsettings/serial/ZETFallbackKeySettings.h"
#include "zetsettings/serial/ZETFallbackSettings.h"
#include "zetsettings/serial/ZETLoginData.h"
#include "zetsettings/serial/ZETNetworkSettings.h"
#include "zetsettings/serial/ZETPreferredNetEntry.h"
#include "zetsettings/serial/ZETUserSettings.h"

namespace zetserialtest {

using Bytes = std::vector<uint8_t>;

// "04 00 00 00 61 00" -> bytes; spaces are free.
inline Bytes hex(const std::string& text)
{
    Bytes out;
    std::istringstream in(text);
    std::string token;
    while (in >> token) {
        for (std::size_t i = 0; i + 2 <= token.size(); i += 2)
            out.push_back(static_cast<uint8_t>(std::stoul(token.substr(i, 2), nullptr, 16)));
    }
    return out;
}

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The counted forms of this library's byte types: u32 LE count, then the bytes.
inline Bytes counted(const std::string& bytes)
{
    const auto n = static_cast<uint32_t>(bytes.size());
    return Bytes{uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)} + Bytes(bytes.begin(), bytes.end());
}

// serialize into room for getSerLength bytes behind which a guard stands; the guard must
// survive and the result must equal getSerLength.
inline Bytes written(const ZETSerializeInterface& object)
{
    const int length = object.getSerLength();
    EXPECT_GT(length, 0);
    Bytes room(static_cast<std::size_t>(length) + 8, 0xA5);
    const int result = object.serialize(room.data());
    EXPECT_EQ(result, length) << "serialize and getSerLength disagree";
    for (std::size_t i = static_cast<std::size_t>(length); i < room.size(); ++i)
        EXPECT_EQ(room[i], 0xA5) << "serialize wrote past getSerLength";
    room.resize(static_cast<std::size_t>(length));
    return room;
}

inline ZETBuf bufferOf(const std::string& bytes)
{
    return ZETBuf(bytes.data(), bytes.size());
}

inline Bytes bytesOf(const ZETBuf& buffer)
{
    return Bytes(buffer.getData(), buffer.getData() + buffer.getSize());
}

// The serial form of an object as the stores write it (before any encryption).
inline std::string plainForm(const ZETSerializeInterface& object)
{
    std::string bytes(static_cast<std::size_t>(object.getSerLength()), '\0');
    object.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    return bytes;
}

inline ZETFallbackSettings fallbackRecord(const std::wstring& owner, const std::wstring& network,
                                          const std::string& bytes1 = "", const std::string& bytes2 = "")
{
    ZETFallbackSettings record;
    record.owner = owner;
    record.network = network;
    record.fallbackBytes1 = bytes1;
    record.fallbackBytes2 = bytes2;
    return record;
}

inline ZETFallbackKeySettings fallbackKey(const std::wstring& text1, const std::wstring& text2,
                                          const std::string& bytes = "")
{
    ZETFallbackKeySettings key;
    key.keyText1 = text1;
    key.keyText2 = text2;
    key.keyBytes = bytes;
    return key;
}

// Network settings and logins can't be copied: they come in shared pointers, as the store hands them.
inline boost::shared_ptr<ZETNetworkSettings> networkRecord(const std::wstring& text, unsigned char flag1,
                                                           unsigned char flag2, unsigned char flag3,
                                                           unsigned char flag4, const std::string& secret = "",
                                                           const std::string& plain = "")
{
    const auto record = boost::make_shared<ZETNetworkSettings>();
    record->profileText = text;
    record->profileFlag1 = flag1;
    record->profileFlag2 = flag2;
    record->profileFlag3 = flag3;
    record->profileFlag4 = flag4;
    record->protectedBlob = bufferOf(secret);
    record->plainBlob = bufferOf(plain);
    return record;
}

inline boost::shared_ptr<ZETLoginData> loginRecord(const std::wstring& user, const std::wstring& password,
                                                   unsigned char enabled, unsigned char keep, unsigned char dependent)
{
    const auto record = boost::make_shared<ZETLoginData>();
    record->userName = user;
    record->password = password;
    record->loginEnabled = enabled;
    record->keepPassword = keep;
    record->dependentFlag = dependent;
    return record;
}

inline boost::shared_ptr<ZETUserSettings> userRecord(const std::wstring& text, const std::string& bytes = "")
{
    const auto record = boost::make_shared<ZETUserSettings>();
    record->userText = text;
    record->userBytes = bytes;
    return record;
}

inline ZETPreferredNetEntry entry(const std::wstring& name, unsigned char matchKind = 0, unsigned char byte1 = 0,
                                  unsigned char byte2 = 0, const std::string& mac = "", unsigned char flag = 0)
{
    ZETPreferredNetEntry made;
    made.netName = name;
    made.macAddress.assign(mac.data(), mac.size());
    made.entryFlag = flag;
    made.matchKind = matchKind;
    made.matchByte1 = byte1;
    made.matchByte2 = byte2;
    return made;
}

} // namespace zetserialtest

#endif
