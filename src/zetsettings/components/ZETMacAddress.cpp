#include "zetsettings/components/ZETMacAddress.h"

#include "zetsettings/components/ZETSerialBytes.h"

ZETMacAddress::ZETMacAddress(const void* bytes, std::size_t length)
{
    assign(bytes, length);
}

void ZETMacAddress::assign(const void* bytes, std::size_t length)
{
    if (!bytes || length == 0)
        m_bytes.clear();
    else
        m_bytes.assign(static_cast<const char*>(bytes), length);
}

int ZETMacAddress::serialize(unsigned char* dest) const
{
    return ZETSerialBytes::write(m_bytes, dest);
}

int ZETMacAddress::deserialize(const ZETBufferBChk& src)
{
    return ZETSerialBytes::read(src, m_bytes);
}

int ZETMacAddress::getSerLength() const
{
    return ZETSerialBytes::length(m_bytes);
}
