#include "zetsettings/platform/posix/registry/ValueMemo.h"

#include <string>

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/Store.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

// Larger records are read from the store each time.
const size_t kLargestKept = 1024;

struct Memo {
    uint64_t store = 0;  // Store::serial(); 0 while nothing is kept
    uint64_t key = 0;
    uint64_t snapshot = 0;
    std::string record;  // reused in place, so a warm thread allocates nothing
};

thread_local Memo t_memo;

const uint32_t kReplacement = 0xFFFD;

char16_t storedUnit(const unsigned char* bytes, size_t index)
{
    return static_cast<char16_t>(bytes[2 * index] | (bytes[2 * index + 1] << 8));
}

// Whether the caller's name and a stored one are the same name to the registry: the caller's
// UTF-16 units (as the registry makes them: a character beyond U+FFFF as a surrogate pair,
// anything past U+10FFFF as U+FFFD) equal the stored ones after upcasing.
bool sameName(const WCHAR* name, const NamedRecordView& stored)
{
    size_t unit = 0;
    auto matches = [&](char16_t given) {
        return unit < stored.nameUnits &&
               CaseFolding::upcase(given) == CaseFolding::upcase(storedUnit(stored.nameBytes, unit++));
    };
    for (const WCHAR* next = name; next && *next; ++next) {
        const uint32_t character = static_cast<uint32_t>(*next);
        if (character < 0x10000 || character > 0x10FFFF) {
            if (!matches(static_cast<char16_t>(character < 0x10000 ? character : kReplacement)))
                return false;
        } else if (!matches(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10))) ||
                   !matches(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)))) {
            return false;
        }
    }
    return unit == stored.nameUnits;
}

}  // namespace

bool ValueMemo::find(Store& store, uint64_t key, const WCHAR* name, ValueRecordView& value)
{
    const Memo& memo = t_memo;
    if (memo.store != store.serial() || memo.key != key)
        return false;
    const MDB_val record = {memo.record.size(), const_cast<char*>(memo.record.data())};
    const ValueRecordView remembered = ValueRecordView::parse(record);
    if (!sameName(name, remembered.named) || memo.snapshot != store.lastCommitted())
        return false;
    value = remembered;
    return true;
}

void ValueMemo::remember(const Store& store, uint64_t key, const MDB_val& record, uint64_t snapshotId)
{
    if (record.mv_size > kLargestKept)
        return;
    Memo& memo = t_memo;
    memo.store = 0;  // counts only once complete, should the copy fail
    memo.key = key;
    memo.snapshot = snapshotId;
    memo.record.assign(static_cast<const char*>(record.mv_data), record.mv_size);
    memo.store = store.serial();
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
