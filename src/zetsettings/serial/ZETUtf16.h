// Wide text is UTF-16 on the wire on every platform. Where wchar_t is 16 bits it already is;
// where it is 32 bits, a character beyond U+FFFF goes out as a surrogate pair and a pair
// comes back as one character, and everything that counts text on the wire counts UTF-16
// code units.
//
// What UTF-16 can't carry: a wchar_t value above U+10FFFF (or negative) goes out as U+FFFD.
// A surrogate that stands alone, in memory or on the wire, passes as its own value, so that
// any sequence of units read can be written back unchanged.
#ifndef ZETSETTINGS_SERIAL_ZETUTF16_H
#define ZETSETTINGS_SERIAL_ZETUTF16_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace ZETUtf16 {

// Code units of one character: 2 where wchar_t holds a character beyond U+FFFF whole, else 1.
// Inline, since name codecs ask it for every character they touch.
inline std::size_t unitsOfCharacter(wchar_t character)
{
    if (sizeof(wchar_t) == 2)
        return 1;
    // Widened first, so that the test compiles without a warning where wchar_t is 16 bits.
    const uint32_t code = static_cast<std::make_unsigned<wchar_t>::type>(character);
    return (code > 0xFFFF && code <= 0x10FFFF) ? 2 : 1;
}

// Number of UTF-16 code units that the text becomes.
std::size_t unitCount(const wchar_t* text, std::size_t length);
// Writes the text's code units, low byte first, at dest; returns the end of what it wrote.
unsigned char* encode(const wchar_t* text, std::size_t length, unsigned char* dest);
// Replaces text with the characters of units code units read at src, low byte first.
void decode(const unsigned char* src, std::size_t units, std::wstring& text);
// Orders two texts by their UTF-16 code units: negative, 0 or positive, as compare does. The
// order of std::wstring itself where wchar_t is 16 bits.
int compare(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength);

} // namespace ZETUtf16

#endif
