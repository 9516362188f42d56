// Conversions between the text forms that meet in the tool: UTF-8 (the terminal and .reg files
// of the 8-bit kind), UTF-16 (the registry's own text and .reg files of version 5) and wchar_t
// (the Win32 interface, 16 bits on Windows and 32 elsewhere).
#ifndef ZETSETTINGS_TOOLS_REGFILE_TEXTCODEC_H
#define ZETSETTINGS_TOOLS_REGFILE_TEXTCODEC_H

#include <string>

namespace zetreg {

// Strict: false for bytes that are not well-formed UTF-8 (overlong forms and surrogates included).
bool utf8ToUtf16(const std::string& bytes, std::u16string& text);
// Lenient, for arguments and display: malformed bytes become U+FFFD.
std::u16string utf8ToUtf16Lenient(const std::string& bytes);
// A lone surrogate becomes U+FFFD.
std::string utf16ToUtf8(const std::u16string& text);

// Lossless both ways, lone surrogates included.
std::wstring utf16ToWide(const std::u16string& text);
std::u16string wideToUtf16(const std::wstring& text);

std::string wideToUtf8(const std::wstring& text);
std::wstring utf8ToWide(const std::string& bytes);

// UTF-16 code units as little-endian bytes and back; a trailing odd byte is dropped.
std::string utf16ToBytes(const std::u16string& text);
std::u16string bytesToUtf16(const std::string& bytes);

}  // namespace zetreg

#endif
