// The bounds-checked read cursor of the serial forms. It is passed by const reference and its
// position moves all the same: every reader of one value advances the same cursor.
//
// Also the little-endian helpers that every serial form shares: all integers on the wire are
// little-endian whatever the machine, and nothing is aligned.
#ifndef ZETSETTINGS_COMPONENTS_ZETBUFFERBCHK_H
#define ZETSETTINGS_COMPONENTS_ZETBUFFERBCHK_H

#include <cstdint>

class ZETBufferBChk {
public:
    ZETBufferBChk(const void* bytes, uint32_t length) : data(bytes), size(length), position(0) {}

    // Whether offset + length reaches beyond the bytes. Computed wide, so that a hostile
    // length can't wrap around.
    bool exceeds(uint32_t offset, uint32_t length) const
    {
        return static_cast<uint64_t>(offset) + length > size;
    }
    // Whether the next length bytes are not all there.
    bool exceedsFromPosition(uint32_t length) const { return exceeds(position, length); }
    const unsigned char* current() const { return static_cast<const unsigned char*>(data) + position; }
    // Bytes behind the position; 0 if a position was ever set past the end.
    uint32_t remaining() const { return position < size ? size - position : 0; }
    // Moves on; the caller has checked that the bytes are there.
    void advance(uint32_t length) const { position += length; }

    // Reads a 32-bit count and moves past it, or returns false with nothing moved.
    bool readU32(uint32_t& value) const;

    const void* data;
    uint32_t size;
    mutable uint32_t position;
};

namespace ZETWire {

inline void putU32(unsigned char* dest, uint32_t value)
{
    dest[0] = static_cast<unsigned char>(value);
    dest[1] = static_cast<unsigned char>(value >> 8);
    dest[2] = static_cast<unsigned char>(value >> 16);
    dest[3] = static_cast<unsigned char>(value >> 24);
}

inline uint32_t getU32(const unsigned char* src)
{
    return static_cast<uint32_t>(src[0]) | (static_cast<uint32_t>(src[1]) << 8) |
           (static_cast<uint32_t>(src[2]) << 16) | (static_cast<uint32_t>(src[3]) << 24);
}

// Adds one member's result to a running total, or returns false where the sum would no
// longer fit the int that the interface returns (only a buffer of gigabytes gets there).
inline bool addResult(int& total, int result)
{
    if (result > 0x7FFFFFFF - total)
        return false;
    total += result;
    return true;
}

} // namespace ZETWire

inline bool ZETBufferBChk::readU32(uint32_t& value) const
{
    if (exceedsFromPosition(4))
        return false;
    value = ZETWire::getU32(current());
    position += 4;
    return true;
}

#endif
