// Scalars and wide text: exact wire bytes, reads that stop at the end of the bytes, and the
// UTF-16 form of wide text where wchar_t is wider.
#include "SerialTestBytes.h"
#include "zetsettings/serial/TSerVar.h"
#include "zetsettings/serial/ser_wstring.h"

using namespace zetserialtest;

namespace {

TEST(SerialScalar, FixedWidthLowByteFirstAndAShortReadChangesNothing)
{
    EXPECT_EQ(written(TSerVar<unsigned int>(0xFFFF0201u)), hex("01 02 FF FF"));
    EXPECT_EQ(written(TSerVar<unsigned char>(5)), hex("05"));

    const Bytes bytes = hex("AA 01 02 03 04");
    ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
    TSerVar<unsigned char> first;
    TSerVar<unsigned int> second;
    EXPECT_EQ(first.deserialize(cursor), 1);
    EXPECT_EQ(second.deserialize(cursor), 4);
    EXPECT_EQ(first.value, 0xAA);
    EXPECT_EQ(second.value, 0x04030201u);

    cursor.position = 2;
    TSerVar<unsigned int> cut(77);
    EXPECT_EQ(cut.deserialize(cursor), 0);
    EXPECT_EQ(cut.value, 77u);
    EXPECT_EQ(cursor.position, 2u);
}

TEST(SerialText, ByteCountThenUtf16UnitsWithoutTerminatorAndBack)
{
    Bytes long200 = hex("90 01 00 00");
    for (int i = 0; i < 200; ++i)
        long200 = long200 + hex("7A 00");
    const struct {
        std::wstring text;
        Bytes bytes;
    } cases[] = {
        {L"ab", hex("04 00 00 00 61 00 62 00")},
        {L"", hex("00 00 00 00")},
        {std::wstring(L"a\0b", 3), hex("06 00 00 00 61 00 00 00 62 00")},
        {L"\x20AC", hex("02 00 00 00 AC 20")},
        // Beyond U+FFFF: a surrogate pair on the wire, one character in the caller's text.
        {L"a\U0001F600", hex("06 00 00 00 61 00 3D D8 00 DE")},
        {std::wstring(200, L'z'), long200},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(written(ser_wstring(c.text)), c.bytes) << c.text.size();
        ser_wstring back(L"previous");
        EXPECT_EQ(back.deserialize(c.bytes.data(), static_cast<int>(c.bytes.size())), static_cast<int>(c.bytes.size()));
        EXPECT_EQ(static_cast<const std::wstring&>(back), c.text);
    }
}

TEST(SerialText, CutOddAndHostileCounts)
{
    const struct {
        const char* bytes;
        int result;
        uint32_t position;
        const wchar_t* text;
    } cases[] = {
        {"05 00 00 00 61 00 62 00 63 FF", 9, 9, L"ab"},  // odd: whole units, last byte skipped
        {"06 00 00 00 61 00 62 00", 0, 4, L"kept"},      // cut: fails behind the count
        {"FF FF FF FF 61 00", 0, 4, L"kept"},
        {"02 00 00", 0, 0, L"kept"},                     // no room for the count
    };
    for (const auto& c : cases) {
        const Bytes bytes = hex(c.bytes);
        ZETBufferBChk cursor(bytes.data(), static_cast<uint32_t>(bytes.size()));
        ser_wstring text(L"kept");
        EXPECT_EQ(text.deserialize(cursor), c.result) << c.bytes;
        EXPECT_EQ(cursor.position, c.position) << c.bytes;
        EXPECT_EQ(text, c.text) << c.bytes;
    }
    ser_wstring text(L"kept");
    EXPECT_EQ(text.deserialize(hex("00 00 00 00").data(), -5), 0);
    EXPECT_EQ(text, L"kept");
}

TEST(SerialText, LoneSurrogatesPassAsTheirOwnValue)
{
    // A low surrogate alone, a high one followed by a letter, and a high one at the end.
    const Bytes bytes = hex("0A 00 00 00 00 DC 3D D8 41 00 61 00 3D D8");
    ser_wstring text;
    EXPECT_EQ(text.deserialize(bytes.data(), static_cast<int>(bytes.size())), 14);
    const wchar_t units[] = {0xDC00, 0xD83D, L'A', L'a', 0xD83D};
    EXPECT_EQ(static_cast<const std::wstring&>(text), std::wstring(units, 5));
    EXPECT_EQ(written(text), bytes);
}

#if WCHAR_MAX > 0xFFFF
TEST(SerialText, ValueBeyondUnicodeGoesOutAsReplacementCharacter)
{
    EXPECT_EQ(written(ser_wstring(std::wstring(1, static_cast<wchar_t>(0x110000)))), hex("02 00 00 00 FD FF"));
}
#endif

} // namespace
