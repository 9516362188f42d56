#include "zetsettings/platform/posix/registry/WideText.h"

#include <cstring>
#include <vector>

namespace zet {
namespace portable {
namespace registry {
namespace {

const bool kWideIsUtf16 = sizeof(WCHAR) == 2;
const char16_t kReplacement = 0xFFFD;

bool isHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Whether a surrogate pair starts at position i.
bool pairAt(const char16_t* text, size_t units, size_t i)
{
    return i + 1 < units && isHighSurrogate(text[i]) && isLowSurrogate(text[i + 1]);
}

uint32_t combinePair(char16_t high, char16_t low)
{
    return 0x10000 + ((static_cast<uint32_t>(high) - 0xD800) << 10) + (static_cast<uint32_t>(low) - 0xDC00);
}

char16_t readUnit(const unsigned char* bytes)
{
    return static_cast<char16_t>(bytes[0] | (bytes[1] << 8));
}

// Visits each character of stored UTF-16LE text as the caller sees it: where WCHAR is 32 bits, a
// surrogate pair is one character. Reads the stored bytes in place, with no copy.
template <class Visit>
void forEachCallerCharacter(const unsigned char* stored, size_t units, Visit visit)
{
    for (size_t i = 0; i < units; ++i) {
        const char16_t unit = readUnit(stored + 2 * i);
        if (!kWideIsUtf16 && isHighSurrogate(unit) && i + 1 < units) {
            const char16_t next = readUnit(stored + 2 * (i + 1));
            if (isLowSurrogate(next)) {
                visit(combinePair(unit, next));
                ++i;
                continue;
            }
        }
        visit(unit);
    }
}

}  // namespace

std::u16string WideText::toUtf16(const WCHAR* text)
{
    return toUtf16(text, lengthOf(text));
}

std::u16string WideText::toUtf16(const WCHAR* text, size_t units)
{
    std::u16string out(utf16Units(text, units), u'\0');
    writeUtf16(text, units, &out[0]);
    return out;
}

size_t WideText::lengthOf(const WCHAR* text)
{
    return text ? std::char_traits<WCHAR>::length(text) : 0;
}

size_t WideText::utf16Units(const WCHAR* text, size_t units)
{
    size_t pairs = 0;
    for (size_t i = 0; !kWideIsUtf16 && i < units; ++i)
        pairs += static_cast<uint32_t>(text[i]) - 0x10000u <= 0xFFFFFu;
    return units + pairs;
}

size_t WideText::writeUtf16(const WCHAR* text, size_t units, char16_t* out)
{
    char16_t* const start = out;
    for (size_t i = 0; i < units; ++i) {
        const uint32_t character = static_cast<uint32_t>(text[i]);
        if (character < 0x10000) {
            *out++ = static_cast<char16_t>(character);
        } else if (character <= 0x10FFFF) {
            *out++ = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        } else {
            *out++ = kReplacement;
        }
    }
    return static_cast<size_t>(out - start);
}

size_t WideText::callerUnits(const char16_t* text, size_t units)
{
    if (kWideIsUtf16)
        return units;
    size_t count = 0;
    for (size_t i = 0; i < units; ++i, ++count) {
        if (pairAt(text, units, i))
            ++i;
    }
    return count;
}

size_t WideText::toCaller(const char16_t* text, size_t units, WCHAR* out)
{
    size_t written = 0;
    for (size_t i = 0; i < units; ++i) {
        if (!kWideIsUtf16 && pairAt(text, units, i)) {
            out[written++] = static_cast<WCHAR>(combinePair(text[i], text[i + 1]));
            ++i;
        } else {
            out[written++] = static_cast<WCHAR>(text[i]);
        }
    }
    return written;
}

std::string WideText::callerBytesToStored(const BYTE* data, size_t bytes)
{
    const size_t units = bytes / sizeof(WCHAR);
    std::vector<WCHAR> aligned(units);
    if (units)
        std::memcpy(aligned.data(), data, units * sizeof(WCHAR));
    std::string stored;
    appendLittleEndian(stored, toUtf16(aligned.data(), units));
    return stored;
}

size_t WideText::storedToCallerBytes(const unsigned char* stored, size_t bytes)
{
    size_t characters = 0;
    forEachCallerCharacter(stored, bytes / 2, [&](uint32_t) { ++characters; });
    return characters * sizeof(WCHAR);
}

void WideText::storedToCaller(const unsigned char* stored, size_t bytes, BYTE* out)
{
    // The caller's buffer is bytes, not necessarily aligned for WCHAR.
    forEachCallerCharacter(stored, bytes / 2, [&](uint32_t character) {
        const WCHAR wide = static_cast<WCHAR>(character);
        std::memcpy(out, &wide, sizeof(wide));
        out += sizeof(wide);
    });
}

void WideText::appendLittleEndian(std::string& out, const std::u16string& text)
{
    out.reserve(out.size() + text.size() * 2);
    for (char16_t unit : text) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    }
}

std::u16string WideText::fromLittleEndian(const unsigned char* bytes, size_t units)
{
    std::u16string text(units, u'\0');
    for (size_t i = 0; i < units; ++i)
        text[i] = readUnit(bytes + 2 * i);
    return text;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
