// A wide string with a serial form: every string operation and comparison is that of
// std::basic_string<wchar_t>.
//
// Wire form: the byte count as an unsigned 32-bit little-endian number, equal to twice the
// number of UTF-16 code units, then the units low byte first; no terminator. "ab" is
// 04 00 00 00 61 00 62 00. Where wchar_t is 32 bits the text is converted at this boundary
// (see ZETUtf16.h), so the bytes are the same on every platform.
//
// A read takes the count's bytes whole: an odd count takes count / 2 units and skips the last
// byte. A count larger than what remains fails with 0, the text unchanged and the position
// behind the count.
#ifndef ZETSETTINGS_SERIAL_SER_WSTRING_H
#define ZETSETTINGS_SERIAL_SER_WSTRING_H

#include <functional>
#include <string>

#include "zetsettings/components/ZETSerializeInterface.h"
#include "zetsettings/serial/ZETUtf16.h"

class ser_wstring final : public ZETSerializeInterface, public std::basic_string<wchar_t> {
public:
    ser_wstring() = default;
    ser_wstring(const ser_wstring& other) = default;
    ser_wstring(const std::basic_string<wchar_t>& text) : std::basic_string<wchar_t>(text) {}
    // Null gives the empty text.
    ser_wstring(const wchar_t* text) : std::basic_string<wchar_t>(text ? text : L"") {}
    ser_wstring& operator=(const ser_wstring& other) = default;
    ~ser_wstring() = default;

    int serialize(unsigned char* dest) const override;
    int deserialize(const ZETBufferBChk& src) override;
    int getSerLength() const override;
    // A cursor at 0 over the bytes, read by the cursor form. A negative length reads nothing.
    virtual int deserialize(const unsigned char* src, int length);
};

// Maps keyed by wide text write their entries in UTF-16 code unit order on every platform.
// Where wchar_t is 16 bits this is the string's own order; where it is 32 bits the two differ
// for characters beyond U+FFFF against those from U+E000 up, and the wire's order wins.
namespace std {
template <>
struct less<ser_wstring> {
    bool operator()(const ser_wstring& a, const ser_wstring& b) const
    {
        return ZETUtf16::compare(a.data(), a.size(), b.data(), b.size()) < 0;
    }
};
} // namespace std

#endif
