#include "zetsettings/components/ZETBuf.h"

#include <utility>

#include "zetsettings/components/ZETSerialBytes.h"

ZETBuf::ZETBuf(const char* text) : m_bytes(text ? text : "") {}

ZETBuf::ZETBuf(const void* bytes, std::size_t length)
{
    assign(bytes, length);
}

void ZETBuf::assign(const void* bytes, std::size_t length)
{
    if (!bytes || length == 0)
        m_bytes.clear();
    else
        m_bytes.assign(static_cast<const char*>(bytes), length);
}

void ZETBuf::assignBytes(std::string&& bytes)
{
    m_bytes.swap(bytes);
    bytes.clear();
}

int ZETBuf::serialize(unsigned char* dest) const
{
    return ZETSerialBytes::write(m_bytes, dest);
}

int ZETBuf::deserialize(const ZETBufferBChk& src)
{
    return ZETSerialBytes::read(src, m_bytes);
}

int ZETBuf::getSerLength() const
{
    return ZETSerialBytes::length(m_bytes);
}

int ZETBuf::serializeToBuf(ZETBuf& dest)
{
    return ZETSerializeToBuf(*this, dest);
}

int ZETBuf::serializeToBuf(ZETBuf& dest) const
{
    return ZETSerializeToBuf(*this, dest);
}

int ZETBuf::deserializeFromBuf(const ZETBuf& src)
{
    // Reading a buffer from its own bytes: keep them apart from what is written.
    const int read = &src == this ? ZETDeserializeFromBuf(*this, ZETBuf(src)) : ZETDeserializeFromBuf(*this, src);
    // A failed read leaves nothing of the old bytes: a stored profile's secret that doesn't
    // decrypt must not stand in for its plain form.
    if (read == 0)
        m_bytes.clear();
    return read;
}
