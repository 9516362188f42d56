#include "zetsettings/components/ZETSerializeInterface.h"

#include <string>

#include "zetsettings/components/ZETBuf.h"

int ZETSerializeToBuf(const ZETSerializeInterface& object, ZETBuf& dest)
{
    std::string bytes(static_cast<std::size_t>(object.getSerLength()), '\0');
    const int written = object.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    bytes.resize(static_cast<std::size_t>(written));
    dest.assignBytes(std::move(bytes));
    return written;
}

int ZETDeserializeFromBuf(ZETSerializeInterface& object, const ZETBuf& src)
{
    // A buffer beyond 4 GiB is read as far as a cursor reaches.
    const std::size_t size = src.getSize();
    const ZETBufferBChk cursor(src.getData(), size > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(size));
    return object.deserialize(cursor);
}

int ZETSerializeInterface::serializeToBuf(ZETBuf& dest)
{
    return ZETSerializeToBuf(*this, dest);
}

int ZETSerializeInterface::deserializeFromBuf(const ZETBuf& src)
{
    return ZETDeserializeFromBuf(*this, src);
}
