// The boundary between the caller's WCHAR text and the UTF-16 that the store holds.
//
// Where WCHAR is 32 bits, a character beyond U+FFFF becomes a surrogate pair in the store and
// comes back as one WCHAR; a lone surrogate passes through unchanged both ways, and a WCHAR that
// is no Unicode character at all is stored as U+FFFD. Every count handed back to the caller is
// in the caller's units. Stored text is little-endian UTF-16 on every platform.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WIDETEXT_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WIDETEXT_H

#include <cstddef>
#include <string>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class WideText {
public:
    // A zero-terminated caller text; null reads as empty.
    static std::u16string toUtf16(const WCHAR* text);
    static std::u16string toUtf16(const WCHAR* text, size_t units);
    // The units of a zero-terminated caller text; null reads as empty.
    static size_t lengthOf(const WCHAR* text);
    // How many UTF-16 units the caller's text takes.
    static size_t utf16Units(const WCHAR* text, size_t units);
    // Writes the caller's text as UTF-16 (at most two units a character), for the calls that
    // convert on every use and keep the text in place; returns the units written.
    static size_t writeUtf16(const WCHAR* text, size_t units, char16_t* out);

    // How many caller units the UTF-16 text takes.
    static size_t callerUnits(const char16_t* text, size_t units);
    // Writes the text in caller units, no terminator; returns the units written.
    static size_t toCaller(const char16_t* text, size_t units, WCHAR* out);

    // The data of a string value: the caller's bytes (a partial last WCHAR is dropped) as stored
    // bytes, and stored bytes (a stray odd byte is ignored) as the caller's.
    static std::string callerBytesToStored(const BYTE* data, size_t bytes);
    static size_t storedToCallerBytes(const unsigned char* stored, size_t bytes);
    static void storedToCaller(const unsigned char* stored, size_t bytes, BYTE* out);

    // Little-endian UTF-16 bytes and back.
    static void appendLittleEndian(std::string& out, const std::u16string& text);
    static std::u16string fromLittleEndian(const unsigned char* bytes, size_t units);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
