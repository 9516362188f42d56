#include "zetsettings/platform/posix/registry/RecordKeys.h"

#include <algorithm>

#include "zetsettings/platform/posix/registry/ByteOrder.h"

namespace zet {
namespace portable {
namespace registry {

const size_t RecordKeys::kDirectNameUnits;
const size_t RecordKeys::kPrefixSize;
const size_t RecordKeys::kHashSize;
const size_t RecordKeys::kHashedStemSize;
const size_t RecordKeys::kHashedKeySize;
const size_t RecordKeys::kLongestKey;

std::string RecordKeys::meta(const char* name)
{
    return std::string(1, kMeta) + name;
}

std::string RecordKeys::keyInfo(uint64_t id)
{
    return prefix(kKeyInfo, id);
}

std::string RecordKeys::prefix(Tag tag, uint64_t owner)
{
    std::string key(1, tag);
    appendBigEndian64(key, owner);
    return key;
}

std::string RecordKeys::nameKey(Tag tag, uint64_t owner, const std::u16string& folded, NameHasher hasher)
{
    const size_t direct = std::min(folded.size(), kDirectNameUnits);
    const bool hashed = isHashed(folded);
    std::string key(kPrefixSize + 2 * direct + (hashed ? kHashSize : 0), '\0');
    char* out = &key[0];
    *out++ = tag;
    for (int shift = 56; shift >= 0; shift -= 8)
        *out++ = static_cast<char>((owner >> shift) & 0xFF);
    for (size_t i = 0; i < direct; ++i) {
        *out++ = static_cast<char>(folded[i] >> 8);
        *out++ = static_cast<char>(folded[i] & 0xFF);
    }
    if (hashed) {
        const uint64_t hash = hasher(folded);
        for (int shift = 56; shift >= 0; shift -= 8)
            *out++ = static_cast<char>((hash >> shift) & 0xFF);
    }
    return key;
}

uint64_t RecordKeys::defaultHash(const std::u16string& folded)
{
    uint64_t hash = 0xcbf29ce484222325ull;
    for (char16_t unit : folded) {
        hash = (hash ^ (unit & 0xFF)) * 0x100000001b3ull;
        hash = (hash ^ (unit >> 8)) * 0x100000001b3ull;
    }
    return hash;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
