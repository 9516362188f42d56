// The form of what CryptProtectData hands out.
//
//   version (1 byte, 1) | nonce (24 bytes) | sealed payload | tag (16 bytes)
//
// sealed with XChaCha20-Poly1305 (IETF) under the machine key, with a fresh random nonce for
// every blob. The payload is the description's length in UTF-16 units (32-bit little-endian),
// the description (UTF-16 little-endian), then the data. The version byte followed by the
// caller's optional entropy is the additional data: both must be the same to open the blob.
// Any change to a blob, and a blob of another key, fails to open.
#ifndef ZETSETTINGS_PLATFORM_POSIX_PROTECTEDBLOB_H
#define ZETSETTINGS_PLATFORM_POSIX_PROTECTEDBLOB_H

#include <sodium.h>

#include <cstddef>
#include <string>

#include "zetsettings/platform/posix/MachineKey.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class ProtectedBlob {
public:
    static constexpr unsigned char kVersion = 1;
    static constexpr std::size_t kNonceSize = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
    static constexpr std::size_t kTagSize = crypto_aead_xchacha20poly1305_ietf_ABYTES;
    static constexpr std::size_t kOverhead = 1 + kNonceSize + kTagSize;

    // The blob in out, allocated with malloc. ERROR_SUCCESS, ERROR_INVALID_PARAMETER (too large
    // for a DWORD) or ERROR_NOT_ENOUGH_MEMORY.
    static DWORD seal(const MachineKey& key, const std::u16string& description, const DATA_BLOB& data,
                      const DATA_BLOB& entropy, DATA_BLOB& out);
    // The data in out, allocated with malloc (never null, also for no data). ERROR_SUCCESS,
    // ERROR_INVALID_DATA (not a blob of this key and entropy) or ERROR_NOT_ENOUGH_MEMORY.
    static DWORD open(const MachineKey& key, const DATA_BLOB& blob, const DATA_BLOB& entropy,
                      std::u16string& description, DATA_BLOB& out);
};

}  // namespace portable
}  // namespace zet

#endif
