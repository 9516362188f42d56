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
    std::u16string foldedName;  // reused in place, so a warm thread allocates nothing
    std::string record;
};

thread_local Memo t_memo;

// Starts a new memo; it counts only once complete, should a copy fail.
Memo& startMemo(uint64_t key, const MDB_val& record, uint64_t snapshotId)
{
    Memo& memo = t_memo;
    memo.store = 0;
    memo.key = key;
    memo.snapshot = snapshotId;
    memo.record.assign(static_cast<const char*>(record.mv_data), record.mv_size);
    return memo;
}

}  // namespace

bool ValueMemo::find(Store& store, uint64_t key, std::u16string_view foldedName, ValueRecordView& value)
{
    const Memo& memo = t_memo;
    if (memo.store != store.serial() || memo.key != key || memo.foldedName != foldedName ||
        memo.snapshot != store.lastCommitted())
        return false;
    const MDB_val record = {memo.record.size(), const_cast<char*>(memo.record.data())};
    value = ValueRecordView::parse(record);
    return true;
}

void ValueMemo::remember(const Store& store, uint64_t key, std::u16string_view foldedName, const MDB_val& record,
                         uint64_t snapshotId)
{
    if (record.mv_size > kLargestKept)
        return;
    Memo& memo = startMemo(key, record, snapshotId);
    memo.foldedName.assign(foldedName);
    memo.store = store.serial();
}

void ValueMemo::remember(const Store& store, uint64_t key, const MDB_val& record, uint64_t snapshotId)
{
    if (record.mv_size > kLargestKept)
        return;
    Memo& memo = startMemo(key, record, snapshotId);
    const NamedRecordView named = NamedRecordView::parse(record);
    memo.foldedName.resize(named.nameUnits);
    for (size_t i = 0; i < named.nameUnits; ++i) {
        const unsigned char* unit = named.nameBytes + 2 * i;
        memo.foldedName[i] = CaseFolding::upcase(static_cast<char16_t>(unit[0] | (unit[1] << 8)));
    }
    memo.store = store.serial();
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
