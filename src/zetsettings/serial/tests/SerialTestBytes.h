// Byte helpers of the serialization tests: wire forms spelled as hex, and a writer that
// checks getSerLength against what serialize really writes.
#ifndef ZETSETTINGS_SERIAL_TESTS_SERIALTESTBYTES_H
#define ZETSETTINGS_SERIAL_TESTS_SERIALTESTBYTES_H

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "zetsettings/components/ZETSerializeInterface.h"

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
    const uint32_t n = static_cast<uint32_t>(bytes.size());
    Bytes out(4 + bytes.size());
    for (int i = 0; i < 4; ++i)
        out[static_cast<std::size_t>(i)] = static_cast<uint8_t>(n >> (8 * i));
    for (std::size_t i = 0; i < bytes.size(); ++i)
        out[4 + i] = static_cast<uint8_t>(bytes[i]);
    return out;
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

} // namespace zetserialtest

#endif
