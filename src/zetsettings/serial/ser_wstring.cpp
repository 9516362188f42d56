#include "zetsettings/serial/ser_wstring.h"

#include "zetsettings/serial/ZETUtf16.h"

int ser_wstring::serialize(unsigned char* dest) const
{
    unsigned char* end = ZETUtf16::encode(data(), size(), dest + 4);
    const uint32_t byteCount = static_cast<uint32_t>(end - (dest + 4));
    ZETWire::putU32(dest, byteCount);
    return 4 + static_cast<int>(byteCount);
}

int ser_wstring::deserialize(const ZETBufferBChk& src)
{
    uint32_t byteCount = 0;
    if (!src.readU32(byteCount))
        return 0;
    // The result must fit an int as well as the bytes the buffer.
    if (src.exceedsFromPosition(byteCount) || byteCount > 0x7FFFFFFFu - 4)
        return 0;
    ZETUtf16::decode(src.current(), byteCount / 2, *this);
    src.advance(byteCount);
    return 4 + static_cast<int>(byteCount);
}

int ser_wstring::getSerLength() const
{
    return 4 + 2 * static_cast<int>(ZETUtf16::unitCount(data(), size()));
}

int ser_wstring::deserialize(const unsigned char* src, int length)
{
    const ZETBufferBChk cursor(src, length > 0 && src ? static_cast<uint32_t>(length) : 0);
    return deserialize(cursor);
}

int compareWireOrder(const std::wstring& a, const std::wstring& b)
{
    const int byUnits = ZETUtf16::compare(a.data(), a.size(), b.data(), b.size());
    if (byUnits != 0)
        return byUnits;
    // Same units, so at the first difference one text holds a joined pair where the other holds
    // its high surrogate: the larger character goes first.
    return b.compare(a);
}
