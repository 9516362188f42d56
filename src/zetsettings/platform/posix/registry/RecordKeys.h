// The LMDB keys of the store, bounded below LMDB's 511 bytes however long a registry name is.
//
//   meta record:   'M' | name (ASCII)
//   key info:      'I' | key id (u64, big-endian)
//   subkey entry:  'K' | parent id | folded name
//   value:         'V' | key id    | folded name
//
// A folded name of up to kDirectNameUnits UTF-16 units is the key as it is (big-endian units,
// so keys sort as the names do). A longer one keeps its first kDirectNameUnits units, then a
// 64-bit hash of the whole folded name, then a sequence byte that tells apart longer names
// whose first units and hash coincide; the full name is in the record's data and is compared.
// Direct and hashed keys differ in length, so they never meet.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_RECORDKEYS_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_RECORDKEYS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zet {
namespace portable {
namespace registry {

typedef uint64_t (*NameHasher)(const std::u16string& folded);

class RecordKeys {
public:
    enum Tag : char { kMeta = 'M', kKeyInfo = 'I', kSubkey = 'K', kValue = 'V' };

    static const size_t kDirectNameUnits = 240;
    static const size_t kPrefixSize = 1 + 8;
    static const size_t kHashSize = 8;
    static const size_t kHashedStemSize = kPrefixSize + 2 * kDirectNameUnits + kHashSize;
    static const size_t kHashedKeySize = kHashedStemSize + 1;
    static const size_t kLongestKey = kHashedKeySize;

    static std::string meta(const char* name);
    static std::string keyInfo(uint64_t id);
    // What every record filed under the owner begins with.
    static std::string prefix(Tag tag, uint64_t owner);

    static bool isHashed(std::u16string_view folded) { return folded.size() > kDirectNameUnits; }
    // The whole key of a short name; for a long one, the stem that all its candidates share.
    static std::string nameKey(Tag tag, uint64_t owner, std::u16string_view folded, NameHasher hasher);
    // The same written into out, which has room for kHashedStemSize bytes; returns its size.
    // Lookups build their key this way, with no allocation.
    static size_t writeNameKey(char* out, Tag tag, uint64_t owner, std::u16string_view folded, NameHasher hasher);

    // FNV-1a over the name's little-endian bytes: fixed, so stores move between platforms.
    static uint64_t defaultHash(const std::u16string& folded);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
