#include "zetsettings/platform/posix/ProtectedBlob.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "zetsettings/platform/posix/SecretBytes.h"

namespace zet {
namespace portable {
namespace {

const std::size_t kLengthSize = 4;

// The additional data: the version byte, then the entropy.
std::string additionalData(const DATA_BLOB& entropy)
{
    std::string bytes(1, static_cast<char>(ProtectedBlob::kVersion));
    if (entropy.cbData > 0)
        bytes.append(reinterpret_cast<const char*>(entropy.pbData), entropy.cbData);
    return bytes;
}

void putLength(unsigned char* at, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        at[i] = static_cast<unsigned char>(value >> (8 * i));
}

std::uint32_t getLength(const unsigned char* at)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = (value << 8) | at[i];
    return value;
}

void putDescription(unsigned char* at, const std::u16string& description)
{
    putLength(at, static_cast<std::uint32_t>(description.size()));
    at += kLengthSize;
    for (char16_t unit : description) {
        *at++ = static_cast<unsigned char>(unit & 0xff);
        *at++ = static_cast<unsigned char>(unit >> 8);
    }
}

std::u16string getDescription(const unsigned char* at, std::size_t units)
{
    std::u16string description(units, u'\0');
    for (std::size_t i = 0; i < units; ++i)
        description[i] = static_cast<char16_t>(at[2 * i] | (at[2 * i + 1] << 8));
    return description;
}

}  // namespace

DWORD ProtectedBlob::seal(const MachineKey& key, const std::u16string& description, const DATA_BLOB& data,
                          const DATA_BLOB& entropy, DATA_BLOB& out)
{
    const std::size_t descriptionBytes = 2 * description.size();
    const std::size_t payloadSize = kLengthSize + descriptionBytes + data.cbData;
    const std::size_t blobSize = kOverhead + payloadSize;
    if (blobSize > std::numeric_limits<DWORD>::max())
        return ERROR_INVALID_PARAMETER;

    SecretBytes payload(payloadSize);
    putDescription(payload.data(), description);
    if (data.cbData > 0)
        std::memcpy(payload.data() + kLengthSize + descriptionBytes, data.pbData, data.cbData);

    unsigned char* blob = static_cast<unsigned char*>(std::malloc(blobSize));
    if (!blob)
        return ERROR_NOT_ENOUGH_MEMORY;
    blob[0] = kVersion;
    unsigned char* nonce = blob + 1;
    randombytes_buf(nonce, kNonceSize);
    const std::string aad = additionalData(entropy);
    crypto_aead_xchacha20poly1305_ietf_encrypt(nonce + kNonceSize, nullptr, payload.data(), payload.size(),
                                               reinterpret_cast<const unsigned char*>(aad.data()), aad.size(),
                                               nullptr, nonce, key.bytes());
    out.pbData = blob;
    out.cbData = static_cast<DWORD>(blobSize);
    return ERROR_SUCCESS;
}

DWORD ProtectedBlob::open(const MachineKey& key, const DATA_BLOB& blob, const DATA_BLOB& entropy,
                          std::u16string& description, DATA_BLOB& out)
{
    if (blob.cbData < kOverhead + kLengthSize || blob.pbData[0] != kVersion)
        return ERROR_INVALID_DATA;
    const unsigned char* nonce = blob.pbData + 1;
    const unsigned char* sealed = nonce + kNonceSize;
    const std::size_t sealedSize = blob.cbData - 1 - kNonceSize;

    SecretBytes payload(sealedSize - kTagSize);
    const std::string aad = additionalData(entropy);
    if (crypto_aead_xchacha20poly1305_ietf_decrypt(payload.data(), nullptr, nullptr, sealed, sealedSize,
                                                   reinterpret_cast<const unsigned char*>(aad.data()),
                                                   aad.size(), nonce, key.bytes()) != 0)
        return ERROR_INVALID_DATA;

    // Authentic, so made by this code; checked all the same rather than trusted.
    const std::size_t units = getLength(payload.data());
    if (units > (payload.size() - kLengthSize) / 2)
        return ERROR_INVALID_DATA;
    const std::size_t dataOffset = kLengthSize + 2 * units;
    const std::size_t dataSize = payload.size() - dataOffset;

    unsigned char* data = static_cast<unsigned char*>(std::malloc(dataSize > 0 ? dataSize : 1));
    if (!data)
        return ERROR_NOT_ENOUGH_MEMORY;
    if (dataSize > 0)
        std::memcpy(data, payload.data() + dataOffset, dataSize);
    description = getDescription(payload.data() + kLengthSize, units);
    out.pbData = data;
    out.cbData = static_cast<DWORD>(dataSize);
    return ERROR_SUCCESS;
}

}  // namespace portable
}  // namespace zet
