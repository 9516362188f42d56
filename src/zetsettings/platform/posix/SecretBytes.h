// A byte buffer for plaintext and key material, wiped when it goes.
#ifndef ZETSETTINGS_PLATFORM_POSIX_SECRETBYTES_H
#define ZETSETTINGS_PLATFORM_POSIX_SECRETBYTES_H

#include <sodium.h>

#include <cstddef>
#include <vector>

namespace zet {
namespace portable {

class SecretBytes {
public:
    explicit SecretBytes(std::size_t size) : m_bytes(size) {}
    ~SecretBytes() { sodium_memzero(m_bytes.data(), m_bytes.size()); }

    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    unsigned char* data() { return m_bytes.data(); }
    const unsigned char* data() const { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }

private:
    std::vector<unsigned char> m_bytes;
};

}  // namespace portable
}  // namespace zet

#endif
