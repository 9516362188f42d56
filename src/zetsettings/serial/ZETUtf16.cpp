#include "zetsettings/serial/ZETUtf16.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

constexpr bool kWideIs16 = sizeof(wchar_t) == 2;

uint32_t codePoint(wchar_t c)
{
    return static_cast<uint32_t>(static_cast<std::make_unsigned<wchar_t>::type>(c));
}

// The units of one character where wchar_t is 32 bits: 1 or 2 (a pair).
int unitsOf(uint32_t c, uint16_t units[2])
{
    if (c <= 0xFFFF) {
        units[0] = static_cast<uint16_t>(c);
        return 1;
    }
    if (c > 0x10FFFF) {
        units[0] = 0xFFFD;
        return 1;
    }
    c -= 0x10000;
    units[0] = static_cast<uint16_t>(0xD800 + (c >> 10));
    units[1] = static_cast<uint16_t>(0xDC00 + (c & 0x3FF));
    return 2;
}

// Walks a text's UTF-16 units one at a time, for comparison.
class UnitReader {
public:
    UnitReader(const wchar_t* text, std::size_t length) : m_text(text), m_length(length) {}
    bool next(uint16_t& unit)
    {
        if (m_pending < m_count) {
            unit = m_units[m_pending++];
            return true;
        }
        if (m_index == m_length)
            return false;
        m_count = unitsOf(codePoint(m_text[m_index++]), m_units);
        m_pending = 1;
        unit = m_units[0];
        return true;
    }

private:
    const wchar_t* m_text;
    std::size_t m_length;
    std::size_t m_index = 0;
    uint16_t m_units[2] = {0, 0};
    int m_count = 0;
    int m_pending = 0;
};

} // namespace

namespace ZETUtf16 {

std::size_t unitCount(const wchar_t* text, std::size_t length)
{
    if (kWideIs16)
        return length;
    std::size_t units = length;
    for (std::size_t i = 0; i < length; ++i) {
        const uint32_t c = codePoint(text[i]);
        units += (c > 0xFFFF && c <= 0x10FFFF) ? 1 : 0;
    }
    return units;
}

unsigned char* encode(const wchar_t* text, std::size_t length, unsigned char* dest)
{
    for (std::size_t i = 0; i < length; ++i) {
        const uint32_t c = codePoint(text[i]);
        if (c <= 0xFFFF) {
            *dest++ = static_cast<unsigned char>(c);
            *dest++ = static_cast<unsigned char>(c >> 8);
            continue;
        }
        uint16_t units[2];
        const int count = unitsOf(c, units);
        for (int u = 0; u < count; ++u) {
            *dest++ = static_cast<unsigned char>(units[u]);
            *dest++ = static_cast<unsigned char>(units[u] >> 8);
        }
    }
    return dest;
}

void decode(const unsigned char* src, std::size_t units, std::wstring& text)
{
    // resize, not a fresh string, so that a text read again and again keeps its capacity.
    text.resize(units);
    wchar_t* out = &text[0];
    wchar_t* const begin = out;
    for (std::size_t i = 0; i < units; ++i) {
        uint32_t unit = static_cast<uint32_t>(src[2 * i]) | (static_cast<uint32_t>(src[2 * i + 1]) << 8);
        if (!kWideIs16 && (unit & 0xFC00) == 0xD800 && i + 1 < units) {
            const uint32_t low = static_cast<uint32_t>(src[2 * i + 2]) | (static_cast<uint32_t>(src[2 * i + 3]) << 8);
            if ((low & 0xFC00) == 0xDC00) {
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        *out++ = static_cast<wchar_t>(unit);
    }
    text.resize(static_cast<std::size_t>(out - begin));
}

int compare(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength)
{
    // Equal characters are equal units, so skip the common start as characters.
    std::size_t same = 0;
    const std::size_t shorter = aLength < bLength ? aLength : bLength;
    while (same < shorter && a[same] == b[same])
        ++same;
    if (same == shorter)
        return aLength == bLength ? 0 : (aLength < bLength ? -1 : 1);
    // Below the surrogates a character is its own single unit.
    const uint32_t ca = codePoint(a[same]);
    const uint32_t cb = codePoint(b[same]);
    if (kWideIs16 || (ca < 0xD800 && cb < 0xD800))
        return ca < cb ? -1 : 1;
    UnitReader left(a + same, aLength - same);
    UnitReader right(b + same, bLength - same);
    for (;;) {
        uint16_t l = 0;
        uint16_t r = 0;
        const bool hasLeft = left.next(l);
        const bool hasRight = right.next(r);
        if (!hasLeft || !hasRight)
            return hasLeft ? 1 : (hasRight ? -1 : 0);
        if (l != r)
            return l < r ? -1 : 1;
    }
}

} // namespace ZETUtf16
