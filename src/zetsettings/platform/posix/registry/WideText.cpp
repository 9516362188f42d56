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

void appendCharacter(std::u16string& out, uint32_t character)
{
    if (character < 0x10000) {
        out.push_back(static_cast<char16_t>(character));
    } else if (character <= 0x10FFFF) {
        character -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (character >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
    } else {
        out.push_back(kReplacement);
    }
}

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
    if (!text)
        return std::u16string();
    size_t units = 0;
    while (text[units])
        ++units;
    return toUtf16(text, units);
}

std::u16string WideText::toUtf16(const WCHAR* text, size_t units)
{
    size_t pairs = 0;
    for (size_t i = 0; !kWideIsUtf16 && i < units; ++i)
        pairs += static_cast<uint32_t>(text[i]) - 0x10000u <= 0xFFFFFu;
    std::u16string out(units + pairs, u'\0');
    if (pairs == 0) {
        // The common case: every character is one unit (or is replaced by one).
        for (size_t i = 0; i < units; ++i) {
            const uint32_t character = static_cast<uint32_t>(text[i]);
            out[i] = character < 0x10000 ? static_cast<char16_t>(character) : kReplacement;
        }
        return out;
    }
    out.clear();
    for (size_t i = 0; i < units; ++i)
        appendCharacter(out, static_cast<uint32_t>(text[i]));
    return out;
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
