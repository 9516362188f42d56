// A byte buffer with a serial form.
//
// Wire form (self-delimiting, so that the next member follows at once): the byte count as an
// unsigned 32-bit little-endian number, then the bytes. An empty buffer is 00 00 00 00.
// ser_string and ZETMacAddress share this form.
#ifndef ZETSETTINGS_COMPONENTS_ZETBUF_H
#define ZETSETTINGS_COMPONENTS_ZETBUF_H

#include <cstddef>
#include <string>

#include "zetsettings/components/ZETSerializeInterface.h"

class ZETBuf final : public ZETSerializeInterface {
public:
    ZETBuf() = default;
    // The bytes of a narrow text, without its terminator: built from "" (or null) the buffer
    // is empty.
    ZETBuf(const char* text);
    ZETBuf(const void* bytes, std::size_t length);
    ZETBuf(const ZETBuf& other) = default;
    ZETBuf& operator=(const ZETBuf& other) = default;
    ~ZETBuf() = default;

    void assign(const void* bytes, std::size_t length);
    // Takes over the bytes of a string without copying them; bytes is left empty.
    void assignBytes(std::string&& bytes);
    const unsigned char* getData() const { return reinterpret_cast<const unsigned char*>(m_bytes.data()); }
    std::size_t getSize() const { return m_bytes.size(); }
    bool isEmpty() const { return m_bytes.empty(); }
    const std::string& bytes() const { return m_bytes; }

    bool operator==(const ZETBuf& other) const { return m_bytes == other.m_bytes; }
    bool operator!=(const ZETBuf& other) const { return m_bytes != other.m_bytes; }

    int serialize(unsigned char* dest) const override;
    int deserialize(const ZETBufferBChk& src) override;
    int getSerLength() const override;
    int serializeToBuf(ZETBuf& dest) override;
    // Reads this buffer's serial form from the bytes of src; a read that fails leaves the
    // buffer empty, unlike a read from a cursor, which leaves it unchanged.
    int deserializeFromBuf(const ZETBuf& src) override;
    // The inner layer of a stored network profile: this buffer's own serial form into dest.
    // dest may be this buffer itself.
    virtual int serializeToBuf(ZETBuf& dest) const;

private:
    std::string m_bytes;
};

#endif
