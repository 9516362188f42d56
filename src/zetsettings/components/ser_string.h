// A narrow string with a serial form: every string operation and comparison is that of
// std::string, whose bytes it holds unchanged (no character set is implied).
//
// Wire form: the byte count as an unsigned 32-bit little-endian number, then the bytes, no
// terminator; the same as ZETBuf. The empty string is 00 00 00 00, "ab" is 02 00 00 00 61 62.
#ifndef ZETSETTINGS_COMPONENTS_SER_STRING_H
#define ZETSETTINGS_COMPONENTS_SER_STRING_H

#include <string>

#include "zetsettings/components/ZETSerializeInterface.h"

class ser_string final : public ZETSerializeInterface, public std::string {
public:
    ser_string() = default;
    ser_string(const ser_string& other) = default;
    ser_string(const std::string& text) : std::string(text) {}
    // Null gives the empty string.
    ser_string(const char* text) : std::string(text ? text : "") {}
    ser_string& operator=(const ser_string& other) = default;
    ~ser_string() = default;

    int serialize(unsigned char* dest) const override;
    int deserialize(const ZETBufferBChk& src) override;
    int getSerLength() const override;
    // A cursor at 0 over the bytes, read by the cursor form. A negative length reads nothing.
    virtual int deserialize(const unsigned char* src, int length);
};

#endif
