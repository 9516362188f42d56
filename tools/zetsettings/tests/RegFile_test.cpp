// The .reg reader and writer on their own: the exact form Windows writes, and reading it back.
// The files that must be refused whole, and reading the 8-bit kinds, go through the tool's import.
#include <gtest/gtest.h>

#include "regfile/TextCodec.h"
#include "regfile/fuzz/RegFileFuzzBody.h"
#include "support/FuzzCorpus.h"

using namespace zetreg;

namespace {

RegFileValue value(const std::wstring& name, uint32_t type, const std::string& data)
{
    return {name, name.empty(), false, type, data};
}

// A string value's bytes with their terminator.
std::string sz(const std::u16string& text) { return utf16ToBytes(text) + std::string(2, '\0'); }
// The text of a file as written, without the byte order mark.
std::string textOf(const std::string& bytes) { return utf16ToUtf8(bytesToUtf16(bytes.substr(2))); }

}  // namespace

TEST(RegFileWriter, WritesEveryValueAsWindowsExportsItAndReadsItBack)
{
    const struct {
        RegFileValue value;
        std::string line;  // as Windows' own export writes it
    } cases[] = {
        {value(L"DWORD", kRegDword, std::string("\x00\x01\x00\x00", 4)), "\"DWORD\"=dword:00000100"},
        {value(L"double\"quote", kRegSz, sz(u"\"Hi\" C:\\x")), "\"double\\\"quote\"=\"\\\"Hi\\\" C:\\\\x\""},
        {value(L"", kRegSz, sz(u"Default value name")), "@=\"Default value name\""},
        {value(L"Undefined hex", 0x100, "%PATH%" + std::string(1, '\0')),
         "\"Undefined hex\"=hex(100):25,50,41,54,48,25,00"},
        // 17 bytes on the first line, then lines of 25.
        {value(L"Multiple strings", kRegMultiSz, utf16ToBytes(std::u16string(u"Line1\0Line2\0Line3\0\0", 19))),
         "\"Multiple strings\"=hex(7):4c,00,69,00,6e,00,65,00,31,00,00,00,4c,00,69,00,6e,\\\r\n"
         "  00,65,00,32,00,00,00,4c,00,69,00,6e,00,65,00,33,00,00,00,00,00"},
        {value(L"b", kRegBinary, std::string(60, '\x11')),
         "\"b\"=hex:11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,\\\r\n"
         "  11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,\\\r\n"
         "  11,11,11,11,11,11,11,11,11,11,11,11"},
        // Strings that a quoted string would change, and odd DWORDs, go hex.
        {value(L"s", kRegSz, utf16ToBytes(std::u16string(u"a\0d", 3))), "\"s\"=hex(1):61,00,00,00,64,00"},
        {value(L"s", kRegSz, utf16ToBytes(u"a")), "\"s\"=hex(1):61,00"},
        {value(L"d", kRegDword, ""), "\"d\"=hex(4):"},
        // A name's pairs and a lone surrogate (shown as U+FFFD) read back whole.
        {value(L"n\U0001F600\xD800", kRegNone, ""), "\"n\xF0\x9F\x98\x80\xEF\xBF\xBD\"=hex(0):"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(utf16ToUtf8(formatValueLine(c.value)), c.line);
        const RegFileKey key{L"HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL", false, {c.value}};
        EXPECT_EQ(zetfuzz::compareKeys(RegFile{5, {key}}, readRegFile(writeRegFile({key}))), "");
    }
}

TEST(RegFileWriter, WritesTheFileAsWindowsAndQuotesKeyNamesWithLineBreaks)
{
    const RegFileKey key{L"HKEY_CURRENT_USER\\Software\\Test", false, {value(L"v", kRegDword, std::string(4, '\1'))}};
    const RegFileKey empty{L"HKEY_CURRENT_USER\\Software\\Test\\Sub", false, {}};
    const RegFileKey evil{L"HKEY_LOCAL_MACHINE\\a\\evil\nowner \"[x]\"\r", false, {}};
    const RegFileKey removed{evil.path, true, {}};
    const std::string bytes = writeRegFile({key, empty, evil, removed});
    EXPECT_EQ(textOf(bytes), "Windows Registry Editor Version 5.00\r\n\r\n"
                             "[HKEY_CURRENT_USER\\Software\\Test]\r\n\"v\"=dword:01010101\r\n\r\n"
                             "[HKEY_CURRENT_USER\\Software\\Test\\Sub]\r\n\r\n"
                             "[\"HKEY_LOCAL_MACHINE\\\\a\\\\evil\\nowner \\\"[x]\\\"\\r\"]\r\n\r\n"
                             "[-\"HKEY_LOCAL_MACHINE\\\\a\\\\evil\\nowner \\\"[x]\\\"\\r\"]\r\n\r\n");
    EXPECT_EQ(zetfuzz::compareKeys(RegFile{5, {key, empty, evil, removed}}, readRegFile(bytes)), "");
}

// Replays the kept inputs of the .reg fuzz target through its own checks, so that a fixed
// finding stays fixed in the ordinary test run.
TEST(RegFileFuzzCorpus, InputsPassEveryCheck)
{
    zettest::replayFuzzFolder(std::filesystem::path(ZET_SOURCE_DIR) / "tools/zetsettings/regfile/fuzz", 5,
                              zetfuzz::runRegFile);
}
