// A network card's address as carried in a preferred network entry: a value type holding a
// narrow byte string, empty by default. Its length is whatever the caller gives; the
// library never interprets the bytes, it only compares them.
//
// Wire form: the byte count as an unsigned 32-bit little-endian number, then the bytes, the
// same as ZETBuf. An empty address is 00 00 00 00; a six-byte one is 06 00 00 00 and the six.
#ifndef ZETSETTINGS_COMPONENTS_ZETMACADDRESS_H
#define ZETSETTINGS_COMPONENTS_ZETMACADDRESS_H

#include <cstddef>
#include <string>

#include "zetsettings/components/ZETSerializeInterface.h"

class ZETMacAddress final : public ZETSerializeInterface {
public:
    ZETMacAddress() = default;
    ZETMacAddress(const void* bytes, std::size_t length);
    ZETMacAddress(const ZETMacAddress& other) = default;
    ZETMacAddress& operator=(const ZETMacAddress& other) = default;
    ~ZETMacAddress() = default;

    void assign(const void* bytes, std::size_t length);
    const unsigned char* getData() const { return reinterpret_cast<const unsigned char*>(m_bytes.data()); }
    std::size_t getSize() const { return m_bytes.size(); }
    bool isEmpty() const { return m_bytes.empty(); }
    const std::string& bytes() const { return m_bytes; }

    // Byte equality: same length, same bytes.
    bool operator==(const ZETMacAddress& other) const { return m_bytes == other.m_bytes; }
    bool operator!=(const ZETMacAddress& other) const { return m_bytes != other.m_bytes; }

    int serialize(unsigned char* dest) const override;
    int deserialize(const ZETBufferBChk& src) override;
    int getSerLength() const override;

private:
    std::string m_bytes;
};

#endif
