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

std::string RecordKeys::nameKey(Tag tag, uint64_t owner, std::u16string_view folded, NameHasher hasher)
{
    char key[kHashedStemSize];
    return std::string(key, writeNameKey(key, tag, owner, folded, hasher));
}

size_t RecordKeys::writeNameKey(char* out, Tag tag, uint64_t owner, std::u16string_view folded, NameHasher hasher)
{
    const size_t direct = std::min(folded.size(), kDirectNameUnits);
    out[0] = tag;
    putBigEndian64(out + 1, owner);
    char* name = out + kPrefixSize;
    for (size_t i = 0; i < direct; ++i) {
        name[2 * i] = static_cast<char>(folded[i] >> 8);
        name[2 * i + 1] = static_cast<char>(folded[i]);
    }
    if (!isHashed(folded))
        return kPrefixSize + 2 * direct;
    // Only long names get here, rarely: the hasher takes a string of its own.
    putBigEndian64(name + 2 * direct, hasher(std::u16string(folded)));
    return kHashedStemSize;
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
