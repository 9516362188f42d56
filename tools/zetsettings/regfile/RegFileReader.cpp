#include "RegFileReader.h"

#include "TextCodec.h"

namespace zetreg {
namespace {

const char16_t kHeaderV5[] = u"Windows Registry Editor Version 5.00";
const char16_t kHeaderV4[] = u"REGEDIT4";

std::string display(const std::u16string& text)
{
    return utf16ToUtf8(text);
}

// Windows' ANSI code page of western Europe; bytes below 0x80 and from 0xA0 are Latin-1. The
// five bytes it leaves undefined map to the control characters of the same number, as Windows'
// own conversion does.
const char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::u16string windows1252ToUtf16(const std::string& bytes)
{
    std::u16string text;
    text.reserve(bytes.size());
    for (unsigned char c : bytes)
        text += c >= 0x80 && c < 0xA0 ? kWindows1252High[c - 0x80] : static_cast<char16_t>(c);
    return text;
}

bool startsWithBytes(const std::string& bytes, const char* prefix, std::size_t length)
{
    return bytes.size() >= length && bytes.compare(0, length, prefix, length) == 0;
}

// The 8-bit text of a file or of a REGEDIT4 value: UTF-8 when it is well-formed UTF-8, else (in
// a REGEDIT4 file, as Windows writes them) Windows-1252.
bool decode8Bit(const std::string& bytes, bool regedit4, std::u16string& text)
{
    if (utf8ToUtf16(bytes, text))
        return true;
    if (!regedit4)
        return false;
    text = windows1252ToUtf16(bytes);
    return true;
}

std::u16string decodeFile(const std::string& bytes)
{
    if (startsWithBytes(bytes, "\xFF\xFE", 2)) {
        if (bytes.size() % 2 != 0)
            throw RegFileError(0, "the file is cut or mis-encoded: a UTF-16 file with an odd number of bytes");
        return bytesToUtf16(bytes.substr(2));
    }
    if (startsWithBytes(bytes, "\xFE\xFF", 2))
        throw RegFileError(0, "the file is UTF-16 big-endian; .reg files are UTF-16 little-endian or 8-bit");
    const bool utf8Mark = startsWithBytes(bytes, "\xEF\xBB\xBF", 3);
    std::string body = utf8Mark ? bytes.substr(3) : bytes;
    if (body.find('\0') != std::string::npos)
        throw RegFileError(0, "the file is mis-encoded: it holds NUL bytes but no UTF-16 byte order mark");
    const std::size_t start = body.find_first_not_of(" \t\r\n");
    const bool regedit4 = !utf8Mark && start != std::string::npos && body.compare(start, 8, "REGEDIT4") == 0;
    std::u16string text;
    if (!decode8Bit(body, regedit4, text))
        throw RegFileError(0, "the file is mis-encoded: its 8-bit text is not valid UTF-8 (only REGEDIT4 files "
                              "may be in Windows-1252)");
    return text;
}

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }

int hexDigit(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

bool startsWithIgnoringCase(const std::u16string& text, std::size_t at, const char16_t* prefix)
{
    for (std::size_t i = 0; prefix[i]; ++i) {
        if (at + i >= text.size())
            return false;
        char16_t c = text[at + i];
        if (c >= u'A' && c <= u'Z')
            c = static_cast<char16_t>(c + 32);
        if (c != prefix[i])
            return false;
    }
    return true;
}

class Parser {
public:
    explicit Parser(const std::u16string& text) : m_text(text) {}

    RegFile parse()
    {
        RegFile file;
        file.version = readHeader();
        m_version = file.version;
        std::u16string line;
        while (nextLine(line)) {
            std::size_t at = skipBlanks(line, 0);
            if (at == line.size() || line[at] == u';' || line[at] == u'#')
                continue;
            if (line[at] == u'[')
                file.keys.push_back(readKey(line, at));
            else if (line[at] == u'"' || line[at] == u'@')
                readValue(file, line, at);
            else
                fail("a line that is neither a key, a value nor a comment: " + display(line));
        }
        return file;
    }

private:
    [[noreturn]] void fail(const std::string& message) const { throw RegFileError(m_lineNumber, message); }

    bool nextLine(std::u16string& line)
    {
        if (m_pos >= m_text.size())
            return false;
        const std::size_t end = m_text.find_first_of(u"\r\n", m_pos);
        line = m_text.substr(m_pos, end == std::u16string::npos ? std::u16string::npos : end - m_pos);
        m_pos = end == std::u16string::npos ? m_text.size() : end + 1;
        m_lineEnded = end != std::u16string::npos;
        if (end != std::u16string::npos && m_text[end] == u'\r' && m_pos < m_text.size() && m_text[m_pos] == u'\n')
            ++m_pos;
        ++m_lineNumber;
        return true;
    }

    static std::size_t skipBlanks(const std::u16string& line, std::size_t at)
    {
        while (at < line.size() && isBlank(line[at]))
            ++at;
        return at;
    }

    // Only blanks or a comment may follow the data.
    void expectEnd(const std::u16string& line, std::size_t at) const
    {
        at = skipBlanks(line, at);
        if (at < line.size() && line[at] != u';')
            fail("unexpected text after the value: " + display(line.substr(at)));
    }

    int readHeader()
    {
        std::u16string line;
        while (nextLine(line)) {
            const std::size_t at = skipBlanks(line, 0);
            if (at == line.size())
                continue;
            std::u16string header = line.substr(at);
            while (!header.empty() && isBlank(header.back()))
                header.pop_back();
            if (header == kHeaderV5)
                return 5;
            if (header == kHeaderV4)
                return 4;
            fail("not a .reg file: the first line must be \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\"");
        }
        throw RegFileError(0, "the file is empty: no \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\" header");
    }

    RegFileKey readKey(const std::u16string& line, std::size_t at)
    {
        const std::size_t close = line.rfind(u']');
        if (close == std::u16string::npos || close < at)
            fail("a key line without its closing ]: " + display(line));
        expectEnd(line, close + 1);
        RegFileKey key;
        key.line = m_lineNumber;
        std::size_t start = at + 1;
        if (start < close && line[start] == u'-') {
            key.remove = true;
            ++start;
        }
        if (start < line.size() && line[start] == u'"') {
            // A name with a line break, quoted as value names are: ["HKEY_...\\a\nb"].
            std::size_t end = start;
            key.path = utf16ToWide(readQuoted(line, end));
            if (end >= line.size() || line[end] != u']')
                fail("a quoted key name must be followed by ]: " + display(line));
            expectEnd(line, end + 1);
        } else {
            key.path = utf16ToWide(line.substr(start, close - start));
        }
        checkKeyPath(key.path);
        m_inRemovedKey = key.remove;
        m_haveKey = true;
        return key;
    }

    void checkKeyPath(const std::wstring& path) const
    {
        std::size_t root;
        std::wstring rest;
        if (path.empty())
            fail("a key line with no key name");
        if (!splitRootPath(path, root, rest))
            fail("the key " + wideToUtf8(path) + " lies outside the registry's roots (" + rootNamesForMessage() + ")");
        if (path.find(L"\\\\") != std::wstring::npos || (!path.empty() && path.back() == L'\\'))
            fail("the key " + wideToUtf8(path) + " has an empty name in its path");
    }

    // A quoted string from the opening quote at `at`; `at` ends behind the closing quote.
    std::u16string readQuoted(const std::u16string& line, std::size_t& at) const
    {
        std::u16string text;
        for (++at; at < line.size(); ++at) {
            const char16_t c = line[at];
            if (c == u'"') {
                ++at;
                return text;
            }
            if (c != u'\\') {
                text += c;
                continue;
            }
            if (++at == line.size())
                break;
            switch (line[at]) {
            case u'\\': text += u'\\'; break;
            case u'"': text += u'"'; break;
            case u'n': text += u'\n'; break;
            case u'r': text += u'\r'; break;
            case u'0': text += u'\0'; break;
            default: fail("an unknown escape \\" + display(std::u16string(1, line[at])) + " in a string");
            }
        }
        fail("a string without its closing quote (is the file cut?): " + display(line));
    }

    void readValue(RegFile& file, const std::u16string& line, std::size_t at)
    {
        if (!m_haveKey)
            fail("a value before any [key] line");
        if (m_inRemovedKey)
            fail("a value under a key that the file removes");
        RegFileValue value;
        if (line[at] == u'@') {
            value.isDefault = true;
            ++at;
        } else {
            value.name = utf16ToWide(readQuoted(line, at));
        }
        at = skipBlanks(line, at);
        if (at == line.size() || line[at] != u'=')
            fail("a value name without \"=\": " + display(line));
        at = skipBlanks(line, at + 1);
        readData(value, line, at);
        file.keys.back().values.push_back(std::move(value));
    }

    void readData(RegFileValue& value, const std::u16string& line, std::size_t at)
    {
        if (at < line.size() && line[at] == u'-') {
            value.remove = true;
            expectEnd(line, at + 1);
        } else if (at < line.size() && line[at] == u'"') {
            value.type = kRegSz;
            value.data = utf16ToBytes(readQuoted(line, at) + u'\0');
            expectEnd(line, at);
        } else if (startsWithIgnoringCase(line, at, u"dword:")) {
            value.type = kRegDword;
            value.data = readDword(line, at + 6);
        } else if (startsWithIgnoringCase(line, at, u"hex")) {
            readHex(value, line, at + 3);
        } else {
            fail("value data that is neither a string, dword: nor hex: " + display(line.substr(at)));
        }
    }

    std::string readDword(const std::u16string& line, std::size_t at) const
    {
        at = skipBlanks(line, at);
        uint64_t number = 0;
        int digits = 0;
        for (; at < line.size() && hexDigit(line[at]) >= 0; ++at, ++digits) {
            number = (number << 4) | static_cast<unsigned>(hexDigit(line[at]));
            if (digits >= 8)
                fail("the number of a dword: is out of range (at most 8 hex digits, ffffffff)");
        }
        if (digits == 0)
            fail("dword: without hex digits");
        expectEnd(line, at);
        std::string data(4, '\0');
        for (int i = 0; i < 4; ++i)
            data[i] = static_cast<char>((number >> (8 * i)) & 0xFF);
        return data;
    }

    void readHex(RegFileValue& value, const std::u16string& line, std::size_t at)
    {
        value.type = kRegBinary;
        if (at < line.size() && line[at] == u'(') {
            uint64_t type = 0;
            std::size_t digits = 0;
            for (++at; at < line.size() && hexDigit(line[at]) >= 0; ++at, ++digits)
                type = (type << 4) | static_cast<unsigned>(hexDigit(line[at]));
            if (digits == 0 || digits > 8 || at >= line.size() || line[at] != u')')
                fail("hex( must hold a type of 1 to 8 hex digits and a closing )");
            value.type = static_cast<uint32_t>(type);
            ++at;
        }
        if (at >= line.size() || line[at] != u':')
            fail("hex data without \":\"");
        value.data = readHexBytes(line, at + 1);
        if (m_version == 4 && isTextType(value.type))
            value.data = widenRegedit4Text(value.data);
    }

    // Comma-separated byte pairs, continued over lines that end in a backslash.
    std::string readHexBytes(std::u16string line, std::size_t at)
    {
        std::string bytes;
        bool needByte = false;
        bool continued = false;
        for (;;) {
            at = skipBlanks(line, at);
            if (at == line.size() || line[at] == u';') {
                if (needByte)
                    fail("hex data that ends in a comma without a continuation");
                // Windows ends every line; a continued value cut short looks whole but for that.
                if (continued && !m_lineEnded)
                    fail("the file ends inside continued hex data (is the file cut?)");
                return bytes;
            }
            if (line[at] == u'\\') {
                expectEnd(line, at + 1);
                continued = true;
                do {
                    if (!nextLine(line))
                        fail("hex data continues past the end of the file (is the file cut?)");
                    at = skipBlanks(line, 0);
                } while (at < line.size() && line[at] == u';');  // comment lines may stand between
                continue;
            }
            if (!bytes.empty() && !needByte)
                fail("hex bytes must be separated by commas");
            const int high = hexDigit(line[at]);
            const int low = at + 1 < line.size() ? hexDigit(line[at + 1]) : -1;
            if (high < 0)
                fail("not a hex byte: " + display(line.substr(at)));
            if (low >= 0) {
                bytes += static_cast<char>((high << 4) | low);
                at += 2;
            } else {
                bytes += static_cast<char>(high);
                at += 1;
            }
            at = skipBlanks(line, at);
            needByte = at < line.size() && line[at] == u',';
            if (needByte)
                ++at;
        }
    }

    // REGEDIT4 holds text values in 8-bit form; the registry holds UTF-16.
    std::string widenRegedit4Text(const std::string& narrow) const
    {
        std::u16string text;
        decode8Bit(narrow, true, text);
        return utf16ToBytes(text);
    }

    const std::u16string& m_text;
    std::size_t m_pos = 0;
    int m_lineNumber = 0;
    int m_version = 5;
    bool m_haveKey = false;
    bool m_inRemovedKey = false;
    bool m_lineEnded = true;  // the line read last had its line end
};

}  // namespace

RegFile readRegFile(const std::string& fileBytes)
{
    const std::u16string text = decodeFile(fileBytes);
    return Parser(text).parse();
}

}  // namespace zetreg
