// The counted byte forms that ZETBuf, ser_string and ZETMacAddress share (their exact bytes are
// in the records' worked examples), and the buffer's own round trips through serializeToBuf
// and deserializeFromBuf.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zetsettings/components/ZETBuf.h"
#include "zetsettings/components/ZETMacAddress.h"
#include "zetsettings/components/ser_string.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes written(const ZETSerializeInterface& object)
{
    Bytes bytes(static_cast<std::size_t>(object.getSerLength()));
    EXPECT_EQ(object.serialize(bytes.data()), static_cast<int>(bytes.size()));
    return bytes;
}

Bytes bytesOf(const ZETBuf& buffer)
{
    return Bytes(buffer.getData(), buffer.getData() + buffer.getSize());
}

// The three types behave alike on the wire; each case runs on all of them.
template <typename T>
class CountedBytes : public ::testing::Test {
protected:
    static T make(const std::string& bytes);
    static std::string held(const T& object);
};

template <>
ZETBuf CountedBytes<ZETBuf>::make(const std::string& bytes) { return ZETBuf(bytes.data(), bytes.size()); }
template <>
std::string CountedBytes<ZETBuf>::held(const ZETBuf& object) { return object.bytes(); }
template <>
ser_string CountedBytes<ser_string>::make(const std::string& bytes) { return ser_string(bytes); }
template <>
std::string CountedBytes<ser_string>::held(const ser_string& object) { return object; }
template <>
ZETMacAddress CountedBytes<ZETMacAddress>::make(const std::string& bytes)
{
    return ZETMacAddress(bytes.data(), bytes.size());
}
template <>
std::string CountedBytes<ZETMacAddress>::held(const ZETMacAddress& object) { return object.bytes(); }

using CountedTypes = ::testing::Types<ZETBuf, ser_string, ZETMacAddress>;
TYPED_TEST_SUITE(CountedBytes, CountedTypes);

TYPED_TEST(CountedBytes, ReadsItsOwnFormAndStopsBehindIt)
{
    const std::string content(300, '\x7E');
    Bytes bytes = written(this->make(content));
    bytes.push_back(0x99);
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    TypeParam back = this->make("old");
    EXPECT_EQ(back.deserialize(cursor), 304);
    EXPECT_EQ(cursor.position, 304u);
    EXPECT_EQ(this->held(back), content);
}

TYPED_TEST(CountedBytes, CountPastTheEndFailsAndKeepsTheContent)
{
    for (const Bytes& bytes : {Bytes{5, 0, 0, 0, 1, 2}, Bytes{0xFF, 0xFF, 0xFF, 0xFF, 1}, Bytes{1, 0, 0}}) {
        ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
        TypeParam object = this->make("kept");
        EXPECT_EQ(object.deserialize(cursor), 0);
        EXPECT_EQ(this->held(object), "kept");
        EXPECT_LE(cursor.position, 4u);
    }
}

TEST(ZETBuf, FromNarrowTextHoldsItsBytesWithoutTerminator)
{
    EXPECT_TRUE(ZETBuf("").isEmpty());
    EXPECT_TRUE(ZETBuf(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_EQ(ZETBuf("ab").getSize(), 2u);
}

TEST(ZETBuf, ConstSerializeToBufGivesItsOwnFormEvenIntoItself)
{
    ZETBuf buffer("xyz");
    ZETBuf outer;
    const ZETBuf& view = buffer;
    EXPECT_EQ(view.serializeToBuf(outer), 7);
    EXPECT_EQ(bytesOf(outer), (Bytes{3, 0, 0, 0, 'x', 'y', 'z'}));

    buffer.serializeToBuf(buffer);
    EXPECT_EQ(bytesOf(buffer), bytesOf(outer));
    // And back out of itself.
    EXPECT_EQ(buffer.deserializeFromBuf(buffer), 7);
    EXPECT_EQ(buffer, ZETBuf("xyz"));
}

TEST(ZETMacAddress, EqualOnlyForTheSameBytes)
{
    const ZETMacAddress a("\x00\x11\x22\x33\x44\x55", 6);
    EXPECT_EQ(a, ZETMacAddress("\x00\x11\x22\x33\x44\x55", 6));
    EXPECT_NE(a, ZETMacAddress("\x00\x11\x22\x33\x44", 5));
    EXPECT_NE(a, ZETMacAddress("\x00\x11\x22\x33\x44\x56", 6));
    EXPECT_NE(a, ZETMacAddress());
    EXPECT_EQ(ZETMacAddress(), ZETMacAddress(nullptr, 0));
}

} // namespace
