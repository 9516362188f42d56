// Fixed byte orders for what the store holds, so that a store means the same on every
// platform: little-endian in record data, big-endian in keys (so that ids sort as numbers).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_BYTEORDER_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_BYTEORDER_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace zet {
namespace portable {
namespace registry {

inline void appendLittleEndian32(std::string& out, uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

inline void appendLittleEndian64(std::string& out, uint64_t value)
{
    for (int shift = 0; shift < 64; shift += 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

inline void appendBigEndian64(std::string& out, uint64_t value)
{
    for (int shift = 56; shift >= 0; shift -= 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

inline uint32_t readLittleEndian32(const unsigned char* bytes)
{
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = (value << 8) | bytes[i];
    return value;
}

inline uint64_t readLittleEndian64(const unsigned char* bytes)
{
    uint64_t value = 0;
    for (int i = 7; i >= 0; --i)
        value = (value << 8) | bytes[i];
    return value;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
