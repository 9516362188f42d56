// The root of everything that has a serial form.
//
// A writer calls getSerLength, allocates exactly that many bytes and calls serialize into
// them; serialize returns the bytes written. A reader calls deserialize, which returns the
// bytes consumed, or 0 for failure (a successful read is never 0). deserialize copies what it
// keeps, so the caller may release the bytes right after. The interface has no virtual
// destructor: objects are always destroyed through their concrete type.
#ifndef ZETSETTINGS_COMPONENTS_ZETSERIALIZEINTERFACE_H
#define ZETSETTINGS_COMPONENTS_ZETSERIALIZEINTERFACE_H

#include "zetsettings/components/ZETBufferBChk.h"

class ZETBuf;

class ZETSerializeInterface {
public:
    virtual int serialize(unsigned char* dest) const = 0;
    virtual int deserialize(const ZETBufferBChk& src) = 0;
    virtual int getSerLength() const = 0;
    // The serial form into a buffer, which it replaces; returns the bytes written.
    virtual int serializeToBuf(ZETBuf& dest);
    // Reads the object from the bytes of a buffer; the result of deserialize.
    virtual int deserializeFromBuf(const ZETBuf& src);

protected:
    ZETSerializeInterface() = default;
    ZETSerializeInterface(const ZETSerializeInterface&) = default;
    ZETSerializeInterface& operator=(const ZETSerializeInterface&) = default;
    ~ZETSerializeInterface() = default;
};

// Shared by every serializeToBuf: one sizing pass, one allocation of exactly that size, one
// writing pass, and only then does dest change, so that dest may be part of the object.
int ZETSerializeToBuf(const ZETSerializeInterface& object, ZETBuf& dest);
// A cursor at 0 over the bytes of src, read by the object's deserialize.
int ZETDeserializeFromBuf(ZETSerializeInterface& object, const ZETBuf& src);

#endif
