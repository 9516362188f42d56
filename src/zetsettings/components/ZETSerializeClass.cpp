#include "zetsettings/components/ZETSerializeClass.h"

#include "zetsettings/components/ZETBuf.h"

int ZETSerializeClass::serialize(unsigned char* dest) const
{
    int written = 0;
    for (int position : getMemberList().positions)
        written += memberAt(position).serialize(dest + written);
    return written;
}

int ZETSerializeClass::deserialize(const ZETBufferBChk& src)
{
    int total = 0;
    for (int position : getMemberList().positions) {
        const int read = memberAt(position).deserialize(src);
        if (read == 0 || !ZETWire::addResult(total, read))
            return 0;
    }
    return total;
}

int ZETSerializeClass::getSerLength() const
{
    int length = 0;
    for (int position : getMemberList().positions)
        length += memberAt(position).getSerLength();
    return length;
}

int ZETSerializeClass::deserializeFromBuf(const ZETBuf& src)
{
    return ZETDeserializeFromBuf(*this, src);
}

int ZETSerializeClass::serializeToBuf(ZETBuf& dest) const
{
    // dest may be a member of this record: nothing of it changes before the bytes are made.
    return ZETSerializeToBuf(*this, dest);
}

int ZETSerializeClass::deserialize(const unsigned char* src, int length)
{
    const ZETBufferBChk cursor(src, length > 0 && src ? static_cast<uint32_t>(length) : 0);
    return deserialize(cursor);
}

bool ZETSerializeClass::buildMemberList(ZETSerMemberList& list, int classNumber,
                                        std::initializer_list<const ZETSerializeInterface*> members) const
{
    if (list.classNumber != 0)
        return true;
    const char* base = reinterpret_cast<const char*>(this);
    list.positions.clear();
    for (const ZETSerializeInterface* member : members)
        list.positions.push_back(static_cast<int>(reinterpret_cast<const char*>(member) - base));
    list.classNumber = classNumber;
    return true;
}
