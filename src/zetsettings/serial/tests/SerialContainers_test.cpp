// Maps and vectors: count then elements, keys in order, and what a read leaves behind when the
// bytes are cut, repeated or hostile.
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

TextVector texts(std::initializer_list<const wchar_t*> entries)
{
    TextVector vector;
    for (const wchar_t* entry : entries)
        vector.push_back(entry);
    return vector;
}

TEST(SerialContainer, MapsWriteInAscendingUnsignedKeyOrderWhateverTheStoredOrder)
{
    const Bytes sorted = hex("03 00 00 00  01 00 00 00 02 00 00 00  07 00 00 00 00 00 00 00"
                             "  FF FF FF FF 09 00 00 00");
    EXPECT_EQ(written(numbers({{0xFFFFFFFFu, 9}, {7, 0}, {1, 2}})), sorted);
    NumberMap map;
    const Bytes unsorted = hex("03 00 00 00  FF FF FF FF 09 00 00 00  07 00 00 00 00 00 00 00"
                               "  01 00 00 00 02 00 00 00");
    EXPECT_EQ(readInto(map, unsorted), 28);
    EXPECT_EQ(written(map), sorted);
}

TEST(SerialContainer, TextKeysOrderByUtf16CodeUnitWithCaseDistinct)
{
    // U+1F600 is D83D DE00: before U+FFFD by unit, though after it by code point.
    TextMap map;
    for (const wchar_t* key : {L"\xFFFD", L"ab", L"\U0001F600", L"a", L"B"})
        map[ser_wstring(key)] = "1";
    EXPECT_EQ(written(map), hex("05 00 00 00  02 00 00 00 42 00 01 00 00 00 31"
                                "  02 00 00 00 61 00 01 00 00 00 31"
                                "  04 00 00 00 61 00 62 00 01 00 00 00 31"
                                "  04 00 00 00 3D D8 00 DE 01 00 00 00 31"
                                "  02 00 00 00 FD FF 01 00 00 00 31"));
}

// Where wchar_t is 32 bits, U+10000 and its surrogates as two characters write the same units:
// they are still two keys, and the one a read gives back writes first.
TEST(SerialContainer, TextKeysCompareAsTheyWriteAndNoTwoTextsAreOneKey)
{
    const ser_wstring joined(L"\U00010000");
    const ser_wstring split(std::wstring{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDC00)});
    const struct {
        ser_wstring first, second;
    } ordered[] = {{L"B", L"a"}, {L"a", L"ab"}, {L"\U0001F600", L"\xFFFD"}, {joined, split},
                   {joined + split, split + joined}};
    for (const auto& pair : ordered) {
        if (pair.first == pair.second)
            continue;  // one text where wchar_t is 16 bits
        EXPECT_TRUE(pair.first < pair.second && pair.first <= pair.second && pair.second > pair.first);
        EXPECT_FALSE(pair.second < pair.first || pair.second <= pair.first || pair.first > pair.second);
        EXPECT_TRUE(std::less<ser_wstring>()(pair.first, pair.second));
        EXPECT_FALSE(std::less<ser_wstring>()(pair.second, pair.first));
    }
    TextMap map;
    map[split] = "2";
    map[joined] = "1";
    EXPECT_EQ(map.size(), joined == split ? 1u : 2u);
    TextMap back;
    readInto(back, written(map));
    EXPECT_EQ(back.at(joined), "1");
}

TEST(SerialContainer, VectorKeepsItsOrderAndStopsBehindTheLastElement)
{
    const TextVector vector = texts({L"zeta", L"", L"alpha", L"zeta"});
    const Bytes bytes = written(vector);
    TextVector back = texts({L"old"});
    uint32_t position = 0;
    EXPECT_EQ(readInto(back, bytes + hex("DE AD"), &position), static_cast<int>(bytes.size()));
    EXPECT_EQ(position, bytes.size());
    EXPECT_EQ(static_cast<const std::vector<ser_wstring>&>(back), static_cast<const std::vector<ser_wstring>&>(vector));
}

TEST(SerialContainer, RepeatedKeyKeepsTheFirstValueAndCountsBothEntries)
{
    const Bytes bytes = hex("03 00 00 00  05 00 00 00 01 00 00 00  05 00 00 00 02 00 00 00"
                            "  04 00 00 00 07 00 00 00");
    NumberMap map;
    EXPECT_EQ(readInto(map, bytes), 28);
    EXPECT_EQ(written(map), written(numbers({{5, 1}, {4, 7}})));
}

TEST(SerialContainer, ZeroNegativeOrHugeCountReadsAsEmpty)
{
    for (const char* count : {"00 00 00 00", "FF FF FF FF", "00 00 00 80"}) {
        NumberMap map = numbers({{1, 1}});
        TextVector vector = texts({L"old"});
        uint32_t position = 0;
        EXPECT_EQ(readInto(map, hex(count) + hex("01 02 03 04 05 06 07 08"), &position), 4);
        EXPECT_EQ(position, 4u);
        EXPECT_EQ(readInto(vector, hex(count), &position), 4);
        EXPECT_TRUE(map.empty());
        EXPECT_TRUE(vector.empty());
    }
}

TEST(SerialContainer, NoRoomForTheCountEmptiesAFullContainer)
{
    NumberMap map = numbers({{1, 1}, {2, 2}});
    TextVector vector = texts({L"x"});
    EXPECT_EQ(readInto(map, Bytes()), 0);
    EXPECT_EQ(readInto(vector, hex("01 00 00")), 0);
    EXPECT_TRUE(map.empty());
    EXPECT_TRUE(vector.empty());
}

TEST(SerialContainer, LargeCountOverFewBytesFailsWithoutTrustingTheCount)
{
    // 0x7FFFFFFF elements claimed, one present: no allocation may follow the count.
    TextVector vector;
    uint32_t position = 0;
    EXPECT_EQ(readInto(vector, hex("FF FF FF 7F  02 00 00 00 61 00"), &position), 0);
    EXPECT_EQ(written(vector), written(texts({L"a"})));
    EXPECT_EQ(position, 10u);
    EXPECT_LE(vector.capacity(), 4u);

    NumberMap map;
    EXPECT_EQ(readInto(map, hex("FF FF FF 7F  01 00 00 00 01 00 00 00  02")), 0);
    EXPECT_EQ(map.size(), 1u);
}

TEST(SerialContainer, AFailedVectorReadKeepsNoRoomForElementsThatNeverCame)
{
    // 0x7FFFFFFF texts claimed over 1 MiB, the first or the second of them cut: room for a
    // quarter million may be reserved while reading, none of it may stay.
    for (const char* before : {"", "02 00 00 00 61 00"}) {
        TextVector vector;
        const Bytes bytes = hex("FF FF FF 7F") + hex(before) + hex("FF FF FF 00") + Bytes(1 << 20, 0);
        EXPECT_EQ(readInto(vector, bytes), 0);
        EXPECT_EQ(vector.capacity(), vector.size());
    }
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
    // The failed value moved past its own count only.
    EXPECT_EQ(position, bytes.size() - 1);

    TextVector vector;
    EXPECT_EQ(readInto(vector, hex("02 00 00 00  02 00 00 00 61 00  04 00 00 00 62 00")), 0);
    EXPECT_EQ(written(vector), written(texts({L"a"})));
}

} // namespace
