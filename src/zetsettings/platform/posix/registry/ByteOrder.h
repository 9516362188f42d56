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

// Written out byte by byte, which compilers turn into one load or store (with a byte swap
// where the host order differs); loops they leave as loops.
inline void putBigEndian64(char* out, uint64_t value)
{
    out[0] = static_cast<char>(value >> 56);
    out[1] = static_cast<char>(value >> 48);
    out[2] = static_cast<char>(value >> 40);
    out[3] = static_cast<char>(value >> 32);
    out[4] = static_cast<char>(value >> 24);
    out[5] = static_cast<char>(value >> 16);
    out[6] = static_cast<char>(value >> 8);
    out[7] = static_cast<char>(value);
}

inline uint32_t readLittleEndian32(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

inline uint64_t readLittleEndian64(const unsigned char* bytes)
{
    return static_cast<uint64_t>(readLittleEndian32(bytes)) | static_cast<uint64_t>(readLittleEndian32(bytes + 4)) << 32;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
