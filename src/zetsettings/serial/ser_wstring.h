// A wide string with a serial form: every string operation and equality is that of
// std::basic_string<wchar_t>; its order is that of the wire (see below), the same where
// wchar_t is 16 bits.
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
#include <type_traits>

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

// Wide text orders by its UTF-16 code units, the order in which maps keyed by it write their
// entries on every platform. Where wchar_t is 16 bits this is the string's own order. Where it
// is 32 bits, two different texts can write the same units: a character beyond U+FFFF and its
// two surrogates as separate characters. They still never compare equal; the one with its pairs
// joined, which is what a read gives back, comes first.
int compareWireOrder(const std::wstring& a, const std::wstring& b);

// The same order against plain wide text, on either side.
template <class A, class B>
using EnableWireOrder =
    typename std::enable_if<(std::is_same<A, ser_wstring>::value || std::is_same<B, ser_wstring>::value) &&
                                std::is_convertible<const A&, std::wstring>::value &&
                                std::is_convertible<const B&, std::wstring>::value,
                            bool>::type;

template <class A, class B, EnableWireOrder<A, B> = true>
inline bool operator<(const A& a, const B& b) { return compareWireOrder(a, b) < 0; }
template <class A, class B, EnableWireOrder<A, B> = true>
inline bool operator>(const A& a, const B& b) { return compareWireOrder(a, b) > 0; }
template <class A, class B, EnableWireOrder<A, B> = true>
inline bool operator<=(const A& a, const B& b) { return compareWireOrder(a, b) <= 0; }
template <class A, class B, EnableWireOrder<A, B> = true>
inline bool operator>=(const A& a, const B& b) { return compareWireOrder(a, b) >= 0; }

namespace std {
template <>
struct less<ser_wstring> {
    bool operator()(const ser_wstring& a, const ser_wstring& b) const { return a < b; }
};
} // namespace std

#endif
