#include "zetsettings/components/ser_string.h"

#include "zetsettings/components/ZETSerialBytes.h"

int ser_string::serialize(unsigned char* dest) const
{
    return ZETSerialBytes::write(*this, dest);
}

int ser_string::deserialize(const ZETBufferBChk& src)
{
    return ZETSerialBytes::read(src, *this);
}

int ser_string::getSerLength() const
{
    return ZETSerialBytes::length(*this);
}

int ser_string::deserialize(const unsigned char* src, int length)
{
    const ZETBufferBChk cursor(src, length > 0 && src ? static_cast<uint32_t>(length) : 0);
    return deserialize(cursor);
}
