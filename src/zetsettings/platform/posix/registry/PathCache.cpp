#include "zetsettings/platform/posix/registry/PathCache.h"

#include <string>
#include <string_view>

#include "zetsettings/platform/posix/registry/Store.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

struct Entry {
    uint64_t store = 0;  // Store::serial(); 0 marks an unused entry
    uint64_t parent = 0;
    uint64_t snapshot = 0;
    PathCache::Found found;
    std::wstring text;  // reused in place, so a warm thread allocates nothing
};

// A caller opens a handful of distinct keys in a row; a few entries cover them.
const size_t kEntries = 8;

struct ThreadCache {
    Entry entries[kEntries];
    size_t next = 0;  // the entry to be replaced next
};

thread_local ThreadCache t_cache;

std::wstring_view textOf(const WCHAR* text)
{
    return text ? std::wstring_view(text) : std::wstring_view();
}

Entry* lookup(uint64_t store, uint64_t parent, std::wstring_view text)
{
    for (Entry& entry : t_cache.entries)
        if (entry.store == store && entry.parent == parent && entry.text == text)
            return &entry;
    return nullptr;
}

}  // namespace

bool PathCache::find(Store& store, uint64_t parent, const WCHAR* text, Found& found)
{
    const Entry* entry = lookup(store.serial(), parent, textOf(text));
    if (!entry || entry->snapshot != store.lastCommitted())
        return false;
    found = entry->found;
    return true;
}

void PathCache::remember(const Store& store, uint64_t parent, const WCHAR* text, const Found& found,
                         uint64_t snapshotId)
{
    Entry* entry = lookup(store.serial(), parent, textOf(text));
    if (!entry) {
        entry = &t_cache.entries[t_cache.next];
        t_cache.next = (t_cache.next + 1) % kEntries;
        entry->store = 0;  // unused until complete, should the copy fail
        entry->text.assign(textOf(text));
        entry->parent = parent;
        entry->store = store.serial();
    }
    entry->snapshot = snapshotId;
    entry->found = found;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
