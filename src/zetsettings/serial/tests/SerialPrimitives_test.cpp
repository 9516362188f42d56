// Scalars and wide text: exact wire bytes, reads that stop at the end of the bytes, and the
// UTF-16 form of wide text where wchar_t is wider.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "SerialTestBytes.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

using namespace zetserialtest;

namespace {

Bytes writtenText(const std::wstring& text)
{
    return written(ser_wstring(text));
}

} // namespace

TEST(SerialScalar, WritesLowByteFirstAtItsFixedWidth)
{
    EXPECT_EQ(written(TSerVar<unsigned int>(513)), hex("01 02 00 00"));
    EXPECT_EQ(written(TSerVar<unsigned int>(0xFFFFFFFEu)), hex("FE FF FF FF"));
    EXPECT_EQ(written(TSerVar<unsigned char>(5)), hex("05"));
    EXPECT_EQ(TSerVar<unsigned char>().value, 0);
    EXPECT_EQ(TSerVar<unsigned int>().value, 0u);
}

TEST(SerialScalar, ReadsWhenTheBytesEndExactlyBehindIt)
{
    const Bytes bytes = hex("AA 01 02 03 04");
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    TSerVar<unsigned char> first;
    TSerVar<unsigned int> second;
    EXPECT_EQ(first.deserialize(cursor), 1);
    EXPECT_EQ(second.deserialize(cursor), 4);
    EXPECT_EQ(first.value, 0xAA);
    EXPECT_EQ(second.value, 0x04030201u);
    EXPECT_EQ(cursor.position, 5u);
}

TEST(SerialScalar, ShortReadFailsAndChangesNothing)
{
    const Bytes bytes = hex("09 01 02 03");
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    cursor.position = 1;
    TSerVar<unsigned int> number(77);
    EXPECT_EQ(number.deserialize(cursor), 0);
    EXPECT_EQ(number.value, 77u);
    EXPECT_EQ(cursor.position, 1u);

    cursor.position = 4;
    TSerVar<unsigned char> byte(3);
    EXPECT_EQ(byte.deserialize(cursor), 0);
    EXPECT_EQ(byte.value, 3);
}

TEST(SerialText, WritesUnitCountInBytesThenUnitsWithoutTerminator)
{
    EXPECT_EQ(writtenText(L"ab"), hex("04 00 00 00 61 00 62 00"));
    EXPECT_EQ(writtenText(L""), hex("00 00 00 00"));
    EXPECT_EQ(writtenText(std::wstring(L"a\0b", 3)), hex("06 00 00 00 61 00 00 00 62 00"));
    EXPECT_EQ(writtenText(L"\x20AC"), hex("02 00 00 00 AC 20"));
}

TEST(SerialText, ReadsBackWithItsFullLengthAndConsumedCount)
{
    const std::wstring cases[] = {L"", L"ab", std::wstring(L"\0x\0", 3), std::wstring(300, L'z')};
    for (const std::wstring& text : cases) {
        const Bytes bytes = writtenText(text);
        ser_wstring back(L"previous");
        EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
        EXPECT_EQ(static_cast<const std::wstring&>(back), text);
    }
}

TEST(SerialText, OddByteCountTakesWholeUnitsAndSkipsTheLastByte)
{
    const Bytes bytes = hex("05 00 00 00 61 00 62 00 63 FF");
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    ser_wstring text;
    EXPECT_EQ(text.deserialize(cursor), 9);
    EXPECT_EQ(text, L"ab");
    EXPECT_EQ(cursor.position, 9u);
}

TEST(SerialText, CountBeyondTheBytesFailsBehindTheCountWithTextKept)
{
    const Bytes cut = hex("06 00 00 00 61 00 62 00");
    const Bytes hostile = hex("FF FF FF FF 61 00");
    for (const Bytes& bytes : {cut, hostile}) {
        ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
        ser_wstring text(L"kept");
        EXPECT_EQ(text.deserialize(cursor), 0);
        EXPECT_EQ(text, L"kept");
        EXPECT_EQ(cursor.position, 4u);
    }
}

TEST(SerialText, NoRoomForTheCountFailsWithNothingMoved)
{
    const Bytes bytes = hex("02 00 00");
    ser_wstring text(L"kept");
    EXPECT_EQ(text.deserialize(bytes.data(), 0), 0);
    EXPECT_EQ(text.deserialize(bytes.data(), -5), 0);
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    EXPECT_EQ(text.deserialize(cursor), 0);
    EXPECT_EQ(cursor.position, 0u);
    EXPECT_EQ(text, L"kept");
}

TEST(SerialCursor, BoundsTestCannotWrapAround)
{
    const unsigned char byte = 0;
    ZETBufferBChk cursor(&byte, 16);
    EXPECT_FALSE(cursor.exceeds(8, 8));
    EXPECT_TRUE(cursor.exceeds(8, 9));
    EXPECT_TRUE(cursor.exceeds(0xFFFFFFF0u, 0x20u));
    EXPECT_TRUE(cursor.exceeds(1, 0xFFFFFFFFu));
}

// Characters beyond U+FFFF as surrogate pairs on the wire, whatever the width of wchar_t.
TEST(SerialTextUtf16, SupplementaryCharacterIsOnePairOnTheWireAndOneCharacterBack)
{
    const std::wstring grin = L"\U0001F600";
    const Bytes bytes = writtenText(L"a" + grin);
    EXPECT_EQ(bytes, hex("06 00 00 00 61 00 3D D8 00 DE"));
    ser_wstring back;
    EXPECT_EQ(back.deserialize(bytes.data(), static_cast<int>(bytes.size())), 10);
    EXPECT_EQ(static_cast<const std::wstring&>(back), L"a" + grin);
}

TEST(SerialTextUtf16, LoneSurrogatesPassAsTheirOwnValue)
{
    // A high surrogate at the end, a low one alone, and a high one followed by a letter.
    const Bytes bytes = hex("0A 00 00 00 00 DC 3D D8 41 00 61 00 3D D8");
    ser_wstring text;
    EXPECT_EQ(text.deserialize(bytes.data(), static_cast<int>(bytes.size())), 14);
    ASSERT_EQ(text.size(), 5u);
    EXPECT_EQ(static_cast<unsigned>(text[0]), 0xDC00u);
    EXPECT_EQ(static_cast<unsigned>(text[1]), 0xD83Du);
    EXPECT_EQ(static_cast<unsigned>(text[4]), 0xD83Du);
    EXPECT_EQ(written(text), bytes);
}

TEST(SerialTextUtf16, OrdersMapKeysByCodeUnit)
{
    // U+1F600 is D83D DE00: before U+FFFD by unit, though after it by code point.
    ser_map<ser_wstring, TSerVar<unsigned char>> map;
    map[ser_wstring(L"\xFFFD")] = 1;
    map[ser_wstring(L"\U0001F600")] = 2;
    map[ser_wstring(L"\xD7FF")] = 3;
    EXPECT_EQ(written(map), hex("03 00 00 00"
                                " 02 00 00 00 FF D7 03"
                                " 04 00 00 00 3D D8 00 DE 02"
                                " 02 00 00 00 FD FF 01"));
}

#if WCHAR_MAX > 0xFFFF
TEST(SerialTextUtf16, ValueBeyondUnicodeGoesOutAsReplacementCharacter)
{
    const std::wstring text(1, static_cast<wchar_t>(0x110000));
    EXPECT_EQ(writtenText(text), hex("02 00 00 00 FD FF"));
}
#endif
