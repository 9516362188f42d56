// The data of the store's records. Every record that lives under a name (a subkey entry, a
// value) begins with that name as the caller wrote it, since the key it is filed under holds
// only the folded, possibly hashed, form:
//
//   named record:  u32 name units | name, UTF-16LE | payload
//   subkey entry:  named record whose payload is the subkey's id (u64)
//   value:         named record whose payload is the type (u32) and the data as stored
//   key info:      parent id (u64) | last write, FILETIME (u64) | named record of the key's name
//
// Numbers are little-endian. Parsing checks every length and throws StoreFailure on a record
// that does not fit, so a damaged store gives an error, never a wild read.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_RECORDS_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_RECORDS_H

#include <lmdb.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace zet {
namespace portable {
namespace registry {

struct NamedRecordView {
    const unsigned char* nameBytes = nullptr;
    size_t nameUnits = 0;
    const unsigned char* payload = nullptr;
    size_t payloadSize = 0;

    std::u16string name() const;
    static NamedRecordView parse(const MDB_val& data);
    // The record's data up to its payload, which the caller appends.
    static std::string start(const std::u16string& name);
};

struct SubkeyEntry {
    static std::string build(const std::u16string& name, uint64_t id);
    static uint64_t idOf(const NamedRecordView& record);
};

struct ValueRecordView {
    NamedRecordView named;
    uint32_t type = 0;
    const unsigned char* data = nullptr;
    size_t size = 0;

    static ValueRecordView parse(const MDB_val& record);
    static std::string build(const std::u16string& name, uint32_t type, const std::string& data);
};

struct KeyInfo {
    uint64_t parent = 0;
    uint64_t lastWrite = 0;
    std::u16string name;

    std::string serialize() const;
    static KeyInfo parse(const MDB_val& data);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
