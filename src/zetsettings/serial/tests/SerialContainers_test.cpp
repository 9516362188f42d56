// Maps and vectors: count then elements, keys in order, and what a read leaves behind when the
// bytes are cut, repeated or hostile.
#include <gtest/gtest.h>

#include <string>

#include "SerialTestBytes.h"
#include "zetsettings/components/ser_string.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_vector.h"
#include "zetsettings/serial/ser_wstring.h"

using namespace zetserialtest;

namespace {

using NumberMap = ser_map<TSerVar<unsigned int>, TSerVar<unsigned int>>;
using TextMap = ser_map<ser_wstring, ser_string>;
using TextVector = ser_vector<ser_wstring>;

template <typename Container>
int readInto(Container& container, const Bytes& bytes, uint32_t* position = nullptr)
{
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    const int result = container.deserialize(cursor);
    if (position)
        *position = cursor.position;
    return result;
}

NumberMap numbers(std::initializer_list<std::pair<unsigned, unsigned>> entries)
{
    NumberMap map;
    for (const auto& entry : entries)
        map.emplace(entry.first, entry.second);
    return map;
}

} // namespace

TEST(SerialContainer, EmptyIsAZeroCountBothWays)
{
    EXPECT_EQ(written(NumberMap()), hex("00 00 00 00"));
    EXPECT_EQ(written(TextVector()), hex("00 00 00 00"));
    NumberMap map = numbers({{1, 1}});
    TextVector vector;
    vector.push_back(L"x");
    EXPECT_EQ(readInto(map, hex("00 00 00 00")), 4);
    EXPECT_EQ(readInto(vector, hex("00 00 00 00")), 4);
    EXPECT_TRUE(map.empty());
    EXPECT_TRUE(vector.empty());
}

TEST(SerialContainer, MapWritesEntriesInAscendingUnsignedKeyOrder)
{
    const NumberMap map = numbers({{0xFFFFFFFFu, 9}, {7, 0}, {1, 2}});
    EXPECT_EQ(written(map), hex("03 00 00 00  01 00 00 00 02 00 00 00  07 00 00 00 00 00 00 00"
                                "  FF FF FF FF 09 00 00 00"));
}

TEST(SerialContainer, TextKeysOrderByCodeUnitWithCaseDistinct)
{
    TextMap map;
    map[ser_wstring(L"ab")] = "3";
    map[ser_wstring(L"a")] = "2";
    map[ser_wstring(L"B")] = "1";
    EXPECT_EQ(written(map), hex("03 00 00 00  02 00 00 00 42 00 01 00 00 00 31"
                                "  02 00 00 00 61 00 01 00 00 00 32"
                                "  04 00 00 00 61 00 62 00 01 00 00 00 33"));
}

TEST(SerialContainer, UnsortedStoredMapReadsSortedAndWritesBackSorted)
{
    const Bytes unsorted = hex("02 00 00 00  09 00 00 00 01 00 00 00  03 00 00 00 00 00 00 00");
    NumberMap map;
    EXPECT_EQ(readInto(map, unsorted), 20);
    EXPECT_EQ(written(map), hex("02 00 00 00  03 00 00 00 00 00 00 00  09 00 00 00 01 00 00 00"));
}

TEST(SerialContainer, RepeatedKeyKeepsTheFirstValueAndCountsBothEntries)
{
    const Bytes bytes = hex("03 00 00 00  05 00 00 00 01 00 00 00  05 00 00 00 02 00 00 00"
                            "  04 00 00 00 07 00 00 00");
    NumberMap map;
    EXPECT_EQ(readInto(map, bytes), 28);
    ASSERT_EQ(map.size(), 2u);
    EXPECT_EQ(map.at(5).value, 1u);
    EXPECT_EQ(map.at(4).value, 7u);
}

TEST(SerialContainer, NegativeOrHugeCountReadsAsEmpty)
{
    for (const char* count : {"FF FF FF FF", "00 00 00 80"}) {
        NumberMap map = numbers({{1, 1}});
        TextVector vector;
        vector.push_back(L"old");
        uint32_t position = 0;
        EXPECT_EQ(readInto(map, hex(count) + hex("01 02 03 04 05 06 07 08"), &position), 4);
        EXPECT_EQ(position, 4u);
        EXPECT_EQ(readInto(vector, hex(count), &position), 4);
        EXPECT_TRUE(map.empty());
        EXPECT_TRUE(vector.empty());
    }
}

TEST(SerialContainer, LargeCountOverFewBytesFailsWithoutTrustingTheCount)
{
    // 0x7FFFFFFF elements claimed, one present: no allocation may follow the count.
    TextVector vector;
    uint32_t position = 0;
    EXPECT_EQ(readInto(vector, hex("FF FF FF 7F  02 00 00 00 61 00"), &position), 0);
    ASSERT_EQ(vector.size(), 1u);
    EXPECT_EQ(vector[0], L"a");
    EXPECT_EQ(position, 10u);
    EXPECT_LE(vector.capacity(), 4u);

    NumberMap map;
    EXPECT_EQ(readInto(map, hex("FF FF FF 7F  01 00 00 00 01 00 00 00  02")), 0);
    EXPECT_EQ(map.size(), 1u);
}

TEST(SerialContainer, NoRoomForTheCountEmptiesAFullContainer)
{
    NumberMap map = numbers({{1, 1}, {2, 2}});
    TextVector vector;
    vector.push_back(L"x");
    EXPECT_EQ(readInto(map, Bytes()), 0);
    EXPECT_EQ(readInto(vector, hex("01 00 00")), 0);
    EXPECT_TRUE(map.empty());
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(map.deserialize(nullptr, 0), 0);
}

TEST(SerialContainer, CutElementIsDroppedAndTheCompleteOnesStay)
{
    // Three entries claimed: two whole, the third's value cut inside its text.
    const Bytes bytes = hex("03 00 00 00  02 00 00 00 61 00 01 00 00 00 31"
                            "  02 00 00 00 62 00 01 00 00 00 32"
                            "  02 00 00 00 63 00 05 00 00 00 33");
    TextMap map;
    uint32_t position = 0;
    EXPECT_EQ(readInto(map, bytes, &position), 0);
    ASSERT_EQ(map.size(), 2u);
    EXPECT_EQ(map.at(ser_wstring(L"b")), "2");
    EXPECT_EQ(map.count(ser_wstring(L"c")), 0u);
    // The failed value moved past its own count only.
    EXPECT_EQ(position, bytes.size() - 1);

    TextVector vector;
    EXPECT_EQ(readInto(vector, hex("02 00 00 00  02 00 00 00 61 00  04 00 00 00 62 00")), 0);
    ASSERT_EQ(vector.size(), 1u);
    EXPECT_EQ(vector[0], L"a");
}

TEST(SerialContainer, BytesBehindTheLastElementAreNotConsumed)
{
    TextVector vector;
    uint32_t position = 0;
    EXPECT_EQ(readInto(vector, hex("01 00 00 00  02 00 00 00 61 00  DE AD BE EF"), &position), 10);
    EXPECT_EQ(position, 10u);
}

TEST(SerialContainer, VectorKeepsItsOrderAcrossARoundTrip)
{
    TextVector vector;
    for (const wchar_t* text : {L"zeta", L"", L"alpha", L"zeta"})
        vector.push_back(text);
    const Bytes bytes = written(vector);
    TextVector back;
    EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
    EXPECT_EQ(static_cast<const std::vector<ser_wstring>&>(back),
              static_cast<const std::vector<ser_wstring>&>(vector));
}

TEST(SerialContainer, EqualMapsWriteEqualBytesHoweverFilled)
{
    TextMap forward;
    TextMap backward;
    const wchar_t* keys[] = {L"k1", L"K1", L"k10", L"k2"};
    for (int i = 0; i < 4; ++i)
        forward[ser_wstring(keys[i])] = std::to_string(i);
    for (int i = 3; i >= 0; --i)
        backward[ser_wstring(keys[i])] = std::to_string(i);
    EXPECT_EQ(written(forward), written(backward));
}
