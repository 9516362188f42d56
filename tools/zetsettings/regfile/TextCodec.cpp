#include "TextCodec.h"

#include <cstdint>

namespace zetreg {
namespace {

const char32_t kReplacement = 0xFFFD;

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

void appendUtf16(std::u16string& out, char32_t c)
{
    if (c <= 0xFFFF) {
        out += static_cast<char16_t>(c);
        return;
    }
    c -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (c >> 10));
    out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
}

void appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// One code point from UTF-8 at pos; false (pos moved past the bad byte) when malformed.
bool decodeUtf8(const std::string& bytes, std::size_t& pos, char32_t& c)
{
    const unsigned char lead = static_cast<unsigned char>(bytes[pos++]);
    if (lead < 0x80) {
        c = lead;
        return true;
    }
    int extra;
    char32_t minimum;
    if ((lead & 0xE0) == 0xC0) {
        extra = 1;
        c = lead & 0x1F;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2;
        c = lead & 0x0F;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3;
        c = lead & 0x07;
        minimum = 0x10000;
    } else {
        return false;
    }
    for (int i = 0; i < extra; ++i) {
        if (pos >= bytes.size())
            return false;
        const unsigned char next = static_cast<unsigned char>(bytes[pos]);
        if ((next & 0xC0) != 0x80)
            return false;
        c = (c << 6) | (next & 0x3F);
        ++pos;
    }
    return c >= minimum && c <= 0x10FFFF && !isSurrogate(c);
}

// One code point from UTF-16 at pos; a lone surrogate comes back as itself.
char32_t decodeUtf16(const std::u16string& text, std::size_t& pos)
{
    const char32_t unit = text[pos++];
    if (unit >= 0xD800 && unit <= 0xDBFF && pos < text.size()) {
        const char32_t low = text[pos];
        if (low >= 0xDC00 && low <= 0xDFFF) {
            ++pos;
            return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
    }
    return unit;
}

}  // namespace

bool utf8ToUtf16(const std::string& bytes, std::u16string& text)
{
    text.clear();
    for (std::size_t pos = 0; pos < bytes.size();) {
        char32_t c;
        if (!decodeUtf8(bytes, pos, c))
            return false;
        appendUtf16(text, c);
    }
    return true;
}

std::u16string utf8ToUtf16Lenient(const std::string& bytes)
{
    std::u16string text;
    for (std::size_t pos = 0; pos < bytes.size();) {
        char32_t c;
        appendUtf16(text, decodeUtf8(bytes, pos, c) ? c : kReplacement);
    }
    return text;
}

std::string utf16ToUtf8(const std::u16string& text)
{
    std::string out;
    for (std::size_t pos = 0; pos < text.size();) {
        const char32_t c = decodeUtf16(text, pos);
        appendUtf8(out, isSurrogate(c) ? kReplacement : c);
    }
    return out;
}

std::wstring utf16ToWide(const std::u16string& text)
{
    std::wstring out;
    if (sizeof(wchar_t) == 2) {
        out.assign(text.begin(), text.end());
        return out;
    }
    for (std::size_t pos = 0; pos < text.size();)
        out += static_cast<wchar_t>(decodeUtf16(text, pos));
    return out;
}

std::u16string wideToUtf16(const std::wstring& text)
{
    std::u16string out;
    for (wchar_t unit : text) {
        const char32_t c = static_cast<char32_t>(static_cast<uint32_t>(unit));
        if (sizeof(wchar_t) == 2 || c <= 0xFFFF || c > 0x10FFFF)
            out += static_cast<char16_t>(c);
        else
            appendUtf16(out, c);
    }
    return out;
}

std::string wideToUtf8(const std::wstring& text)
{
    return utf16ToUtf8(wideToUtf16(text));
}

std::wstring utf8ToWide(const std::string& bytes)
{
    return utf16ToWide(utf8ToUtf16Lenient(bytes));
}

std::string utf16ToBytes(const std::u16string& text)
{
    std::string out;
    out.reserve(text.size() * 2);
    for (char16_t unit : text) {
        out += static_cast<char>(unit & 0xFF);
        out += static_cast<char>(unit >> 8);
    }
    return out;
}

std::u16string bytesToUtf16(const std::string& bytes)
{
    std::u16string out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        out += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                     (static_cast<unsigned char>(bytes[i + 1]) << 8));
    return out;
}

}  // namespace zetreg
