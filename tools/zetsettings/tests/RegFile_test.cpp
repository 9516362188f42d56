// The .reg reader and writer on their own: the exact form Windows writes, reading it back, and
// the files that must be refused whole.
#include <gtest/gtest.h>

#include "regfile/RegFileReader.h"
#include "regfile/RegFileWriter.h"
#include "regfile/TextCodec.h"

using namespace zetreg;

namespace {

RegFileValue value(const std::wstring& name, uint32_t type, const std::string& data)
{
    RegFileValue v;
    v.name = name;
    v.isDefault = name.empty();
    v.type = type;
    v.data = data;
    return v;
}

std::string fileOf(const std::u16string& text) { return "\xFF\xFE" + utf16ToBytes(text); }

// The text of a file as written, without the byte order mark.
std::string textOf(const std::string& bytes) { return utf16ToUtf8(bytesToUtf16(bytes.substr(2))); }

int failingLine(const std::string& bytes)
{
    try {
        readRegFile(bytes);
    } catch (const RegFileError& error) {
        return error.line();
    }
    return -1;
}

}  // namespace

TEST(RegFileWriter, WritesTheFormOfWindowsExport)
{
    RegFileKey key;
    key.path = L"HKEY_CURRENT_USER\\Software\\Test";
    key.values.push_back(value(L"DWORD", kRegDword, std::string("\x00\x01\x00\x00", 4)));
    key.values.push_back(value(L"double\"quote", kRegSz, utf16ToBytes(u"\"Hi\" C:\\x")+std::string(2, '\0')));
    key.values.push_back(value(L"", kRegSz, utf16ToBytes(u"Default value name") + std::string(2, '\0')));
    key.values.push_back(value(L"Undefined hex", 0x100, "%PATH%" + std::string(1, '\0')));
    RegFileKey empty;
    empty.path = L"HKEY_CURRENT_USER\\Software\\Test\\Sub";

    const std::string bytes = writeRegFile({key, empty});
    ASSERT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(textOf(bytes),
              "Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_CURRENT_USER\\Software\\Test]\r\n"
              "\"DWORD\"=dword:00000100\r\n"
              "\"double\\\"quote\"=\"\\\"Hi\\\" C:\\\\x\"\r\n"
              "@=\"Default value name\"\r\n"
              "\"Undefined hex\"=hex(100):25,50,41,54,48,25,00\r\n\r\n"
              "[HKEY_CURRENT_USER\\Software\\Test\\Sub]\r\n\r\n");
}

TEST(RegFileWriter, BreaksLongHexLinesWhereWindowsDoes)
{
    // Windows' own export of this value: 17 bytes on the first line, then lines of 25.
    const std::string lines = utf16ToBytes(std::u16string(u"Line1\0Line2\0Line3\0\0", 19));
    EXPECT_EQ(utf16ToUtf8(formatValueLine(value(L"Multiple strings", kRegMultiSz, lines))),
              "\"Multiple strings\"=hex(7):4c,00,69,00,6e,00,65,00,31,00,00,00,4c,00,69,00,6e,\\\r\n"
              "  00,65,00,32,00,00,00,4c,00,69,00,6e,00,65,00,33,00,00,00,00,00");
    const std::string longData(60, '\x11');
    const std::string line = utf16ToUtf8(formatValueLine(value(L"b", kRegBinary, longData)));
    EXPECT_EQ(line.substr(0, line.find('\r')).size(), 78u);  // "b"=hex: and 23 bytes, then the backslash
    EXPECT_EQ(line.find("\r\n  11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,\\"),
              line.substr(0, line.find('\r')).size());
}

TEST(RegFileWriter, StringsThatAQuotedStringWouldChangeAndOddDwordsGoHex)
{
    EXPECT_EQ(utf16ToUtf8(formatValueLine(value(L"s", kRegSz, utf16ToBytes(std::u16string(u"a\0d", 3))))),
              "\"s\"=hex(1):61,00,00,00,64,00");
    EXPECT_EQ(utf16ToUtf8(formatValueLine(value(L"s", kRegSz, utf16ToBytes(u"a")))), "\"s\"=hex(1):61,00");
    EXPECT_EQ(utf16ToUtf8(formatValueLine(value(L"d", kRegDword, ""))), "\"d\"=hex(4):");
    EXPECT_EQ(utf16ToUtf8(formatValueLine(value(L"n", kRegNone, ""))), "\"n\"=hex(0):");
}

TEST(RegFileReader, ReadsBackWhatTheWriterWrote)
{
    RegFileKey key;
    key.path = L"HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL";
    key.values.push_back(value(L"text", kRegSz, utf16ToBytes(u"line\nbreak \u00e9 \U0001F600") + std::string(2, '\0')));
    key.values.push_back(value(L"num", kRegDword, std::string("\x78\x56\x34\x12", 4)));
    key.values.push_back(value(L"blob", kRegBinary, std::string(100, '\xAB')));
    key.values.push_back(value(L"expand", kRegExpandSz, utf16ToBytes(u"%x%") + std::string(2, '\0')));
    key.values.push_back(value(L"", kRegQword, std::string(8, '\x01')));
    const RegFile file = readRegFile(writeRegFile({key}));
    ASSERT_EQ(file.version, 5);
    ASSERT_EQ(file.keys.size(), 1u);
    EXPECT_EQ(file.keys[0].path, key.path);
    ASSERT_EQ(file.keys[0].values.size(), key.values.size());
    for (std::size_t i = 0; i < key.values.size(); ++i) {
        EXPECT_EQ(file.keys[0].values[i].name, key.values[i].name) << i;
        EXPECT_EQ(file.keys[0].values[i].isDefault, key.values[i].isDefault) << i;
        EXPECT_EQ(file.keys[0].values[i].type, key.values[i].type) << i;
        EXPECT_EQ(file.keys[0].values[i].data, key.values[i].data) << i;
    }
}

TEST(RegFileReader, ReadsDeletionsCommentsAndContinuations)
{
    const RegFile file = readRegFile(fileOf(
        u"Windows Registry Editor Version 5.00\n"
        u"; a comment\n"
        u"\n"
        u"[-HKEY_CURRENT_USER\\Gone]\n"
        u"[HKCU\\Kept] ; trailing comment\n"
        u"\"old\"=-\n"
        u"  \"spaced\" = dword:2A ; answer\n"
        u"\"bin\"=hex:01,02,\\\n"
        u"   ; not data\n"
        u"  03 , 04\n"));
    ASSERT_EQ(file.keys.size(), 2u);
    EXPECT_TRUE(file.keys[0].remove);
    EXPECT_EQ(file.keys[0].path, L"HKEY_CURRENT_USER\\Gone");
    ASSERT_EQ(file.keys[1].values.size(), 3u);
    EXPECT_TRUE(file.keys[1].values[0].remove);
    EXPECT_EQ(file.keys[1].values[1].data, std::string("\x2A\0\0\0", 4));
    EXPECT_EQ(file.keys[1].values[2].data, "\x01\x02\x03\x04");
}

TEST(RegFileReader, WidensTheNarrowTextOfRegedit4)
{
    const RegFile file = readRegFile("REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\x]\r\n"
                                     "\"e\"=hex(2):25,41,25,00\r\n\"s\"=\"caf\xC3\xA9\"\r\n");
    ASSERT_EQ(file.version, 4);
    EXPECT_EQ(file.keys[0].values[0].data, utf16ToBytes(u"%A%") + std::string(2, '\0'));
    EXPECT_EQ(file.keys[0].values[1].data, utf16ToBytes(u"caf\u00e9") + std::string(2, '\0'));
}

TEST(RegFileReader, ReadsRegedit4InWindows1252AsWindowsWritesIt)
{
    const RegFile file = readRegFile("REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\caf\xE9]\r\n"
                                     "\"\x80\"=\"\x93q\x94 \x81\"\r\n\"m\"=hex(7):e9,00,00\r\n");
    ASSERT_EQ(file.keys.size(), 1u);
    EXPECT_EQ(file.keys[0].path, L"HKEY_LOCAL_MACHINE\\Software\\caf\u00e9");
    EXPECT_EQ(file.keys[0].values[0].name, L"\u20ac");
    EXPECT_EQ(file.keys[0].values[0].data, utf16ToBytes(u"\u201cq\u201d \u0081") + std::string(2, '\0'));
    EXPECT_EQ(file.keys[0].values[1].data, utf16ToBytes(u"\u00e9") + std::string(4, '\0'));
}

TEST(RegFileWriter, QuotesKeyNamesWithLineBreaksAndReadsThemBack)
{
    RegFileKey key;
    key.path = L"HKEY_LOCAL_MACHINE\\a\\evil\nowner \"[x]\"\r";
    key.values.push_back(value(L"v", kRegDword, std::string(4, '\1')));
    RegFileKey removed = key;
    removed.remove = true;
    removed.values.clear();
    const std::string bytes = writeRegFile({key, removed});
    EXPECT_NE(textOf(bytes).find("[\"HKEY_LOCAL_MACHINE\\\\a\\\\evil\\nowner \\\"[x]\\\"\\r\"]\r\n"), std::string::npos)
        << textOf(bytes);
    const RegFile file = readRegFile(bytes);
    ASSERT_EQ(file.keys.size(), 2u);
    EXPECT_EQ(file.keys[0].path, key.path);
    EXPECT_EQ(file.keys[0].values.size(), 1u);
    EXPECT_TRUE(file.keys[1].remove);
    EXPECT_EQ(file.keys[1].path, key.path);
}

TEST(RegFileReader, RefusesBrokenFilesNamingTheLine)
{
    const std::u16string header = u"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\S]\r\n";
    // Cut or mis-encoded as a whole: no line to blame.
    EXPECT_EQ(failingLine(fileOf(header) + "\x41"), 0);
    EXPECT_EQ(failingLine(""), 0);
    EXPECT_EQ(failingLine(utf16ToBytes(header)), 0);  // UTF-16 without its byte order mark
    // 8-bit text that is not UTF-8 is Windows-1252 in REGEDIT4 files alone.
    EXPECT_EQ(failingLine("Windows Registry Editor Version 5.00\n[HKLM\\S]\n\"a\"=\"\xC3\x28\"\n"), 0);
    EXPECT_EQ(failingLine(fileOf(u"REGEDIT 5\r\n")), 1);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=\"cut in the mid")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=hex:01,02,\\")), 3);
    // Cut inside a continued value, where the last line still reads as whole.
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=hex:01,02,\\\r\n  03,0")), 4);
    EXPECT_EQ(failingLine(fileOf(header + u"[\"HKEY_LOCAL_MACHINE\\\\a\" x]")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=dword:100000000")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=dword:")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=hex:01,zz")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=\"\\q\"")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"\"a\"=word:1")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"[HKEY_CURRENT_CONFIG\\Software]")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"[HKEY_LOCAL_MACHINE\\a\\\\b]")), 3);
    EXPECT_EQ(failingLine(fileOf(header + u"[HKEY_LOCAL_MACHINE\\a")), 3);
    EXPECT_EQ(failingLine(fileOf(u"Windows Registry Editor Version 5.00\r\n\"a\"=\"x\"")), 2);
    EXPECT_EQ(failingLine(fileOf(u"Windows Registry Editor Version 5.00\r\n[-HKCU\\x]\r\n\"a\"=\"x\"")), 3);
}

TEST(TextCodec, KeepsEveryCodeUnitAcrossWideText)
{
    const std::u16string text = u"a\u00e9\U0001F600\xD800z";  // a lone surrogate included
    EXPECT_EQ(wideToUtf16(utf16ToWide(text)), text);
    std::u16string decoded;
    EXPECT_FALSE(utf8ToUtf16("\xED\xA0\x80", decoded));  // a surrogate in UTF-8
    EXPECT_FALSE(utf8ToUtf16("\xC0\xAF", decoded));      // an overlong form
    EXPECT_TRUE(utf8ToUtf16("\xF0\x9F\x98\x80", decoded));
    EXPECT_EQ(decoded, u"\U0001F600");
}
