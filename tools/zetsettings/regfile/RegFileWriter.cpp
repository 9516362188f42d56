#include "RegFileWriter.h"

#include <cstdio>

#include "TextCodec.h"

namespace zetreg {
namespace {

const char16_t kHeader[] = u"Windows Registry Editor Version 5.00";
const char16_t kLineEnd[] = u"\r\n";
// A hex line is broken once it reaches this many characters, leaving room for ",\".
const std::size_t kHexLineLimit = 77;

std::u16string ascii(const std::string& text)
{
    return std::u16string(text.begin(), text.end());
}

std::u16string quoted(const std::u16string& text)
{
    std::u16string out = u"\"";
    for (char16_t c : text) {
        switch (c) {
        case u'\\': out += u"\\\\"; break;
        case u'"': out += u"\\\""; break;
        // Kept on one line, so that the file reads back as it was.
        case u'\n': out += u"\\n"; break;
        case u'\r': out += u"\\r"; break;
        default: out += c;
        }
    }
    return out + u"\"";
}

// A key line ends at the line's end: a name with a line break in it is quoted instead, with the
// escapes of value names (the backslashes between its keys doubled), and read back so.
std::u16string keyName(const std::u16string& path)
{
    if (path.find_first_of(u"\r\n") == std::u16string::npos)
        return path;
    return quoted(path);
}

// Whether a string value is one text and its terminator, the only form that a quoted string
// reads back to. Anything else (no terminator, text behind it, an odd byte) is written as
// hex(1), so that an import gives back the bytes that were exported.
bool isPlainString(const std::string& data)
{
    if (data.size() < 2 || data.size() % 2 != 0)
        return false;
    const std::u16string text = bytesToUtf16(data);
    return text.find(u'\0') == text.size() - 1;
}

std::u16string stringData(const std::string& data)
{
    const std::u16string text = bytesToUtf16(data);
    return quoted(text.substr(0, text.size() - 1));
}

std::u16string dwordData(const std::string& data)
{
    uint32_t number = 0;
    for (int i = 3; i >= 0; --i)
        number = (number << 8) | static_cast<unsigned char>(data[i]);
    char digits[16];
    std::snprintf(digits, sizeof digits, "dword:%08x", static_cast<unsigned>(number));
    return ascii(digits);
}

std::u16string hexPrefix(uint32_t type)
{
    if (type == kRegBinary)
        return u"hex:";
    char prefix[24];
    std::snprintf(prefix, sizeof prefix, "hex(%x):", static_cast<unsigned>(type));
    return ascii(prefix);
}

// Bytes as "xx,xx,...", broken with ",\" and a two-space indent where the line grows long.
void appendHexBytes(std::u16string& line, std::size_t column, const std::string& data)
{
    for (std::size_t i = 0; i < data.size(); ++i) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(data[i]));
        line += ascii(pair);
        if (i + 1 == data.size())
            break;
        line += u',';
        column += 3;
        if (column >= kHexLineLimit) {
            line += u"\\\r\n  ";
            column = 2;
        }
    }
}

}  // namespace

std::u16string formatValueLine(const RegFileValue& value)
{
    std::u16string line = value.isDefault ? u"@" : quoted(wideToUtf16(value.name));
    line += u'=';
    if (value.remove)
        return line + u'-';
    if (value.type == kRegSz && isPlainString(value.data))
        return line + stringData(value.data);
    if (value.type == kRegDword && value.data.size() == 4)
        return line + dwordData(value.data);
    line += hexPrefix(value.type);
    appendHexBytes(line, line.size(), value.data);
    return line;
}

std::string writeRegFile(const std::vector<RegFileKey>& keys)
{
    std::u16string text = u"\xFEFF";
    text += kHeader;
    text += kLineEnd;
    text += kLineEnd;
    for (const RegFileKey& key : keys) {
        text += key.remove ? u"[-" : u"[";
        text += keyName(wideToUtf16(key.path)) + u"]" + kLineEnd;
        for (const RegFileValue& value : key.values)
            text += formatValueLine(value) + kLineEnd;
        text += kLineEnd;
    }
    return utf16ToBytes(text);
}

}  // namespace zetreg
