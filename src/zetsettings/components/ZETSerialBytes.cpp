#include "zetsettings/components/ZETSerialBytes.h"

#include <cstring>

namespace ZETSerialBytes {

int length(const std::string& bytes)
{
    return 4 + static_cast<int>(bytes.size());
}

int write(const std::string& bytes, unsigned char* dest)
{
    ZETWire::putU32(dest, static_cast<uint32_t>(bytes.size()));
    if (!bytes.empty())
        std::memcpy(dest + 4, bytes.data(), bytes.size());
    return length(bytes);
}

int read(const ZETBufferBChk& src, std::string& bytes)
{
    uint32_t count = 0;
    if (!src.readU32(count))
        return 0;
    // The result must fit an int as well as the bytes the buffer.
    if (src.exceedsFromPosition(count) || count > 0x7FFFFFFFu - 4)
        return 0;
    bytes.assign(reinterpret_cast<const char*>(src.current()), count);
    src.advance(count);
    return 4 + static_cast<int>(count);
}

} // namespace ZETSerialBytes
