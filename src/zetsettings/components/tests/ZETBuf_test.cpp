// The counted byte forms that ZETBuf, ser_string and ZETMacAddress share (their exact bytes are
// in the records' worked examples), and the buffer's own round trips through serializeToBuf
// and deserializeFromBuf.
#include "zetsettings/components/ZETMacAddress.h"
#include "zetsettings/components/ser_string.h"
#include "zetsettings/serial/tests/SerialTestBytes.h"

namespace {

using namespace zetserialtest;

// The three types behave alike on the wire; each case runs on all of them.
template <typename T>
T make(const std::string& bytes) { return T(bytes.data(), bytes.size()); }
template <>
ser_string make<ser_string>(const std::string& bytes) { return ser_string(bytes); }
std::string held(const ZETBuf& object) { return object.bytes(); }
std::string held(const ZETMacAddress& object) { return object.bytes(); }
std::string held(const ser_string& object) { return object; }

template <typename T>
class CountedBytes : public ::testing::Test {};

using CountedTypes = ::testing::Types<ZETBuf, ser_string, ZETMacAddress>;
TYPED_TEST_SUITE(CountedBytes, CountedTypes);

TYPED_TEST(CountedBytes, ReadsItsOwnFormAndStopsBehindIt)
{
    const std::string content(300, '\x7E');
    Bytes bytes = written(make<TypeParam>(content));
    bytes.push_back(0x99);
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    TypeParam back = make<TypeParam>("old");
    EXPECT_EQ(back.deserialize(cursor), 304);
    EXPECT_EQ(cursor.position, 304u);
    EXPECT_EQ(held(back), content);
}

TYPED_TEST(CountedBytes, CountPastTheEndFailsAndKeepsTheContent)
{
    for (const Bytes& bytes : {Bytes{5, 0, 0, 0, 1, 2}, Bytes{0xFF, 0xFF, 0xFF, 0xFF, 1}, Bytes{1, 0, 0}}) {
        ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
        TypeParam object = make<TypeParam>("kept");
        EXPECT_EQ(object.deserialize(cursor), 0);
        EXPECT_EQ(held(object), "kept");
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
