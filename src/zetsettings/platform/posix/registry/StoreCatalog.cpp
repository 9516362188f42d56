#include "zetsettings/platform/posix/registry/StoreCatalog.h"

#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <stdlib.h>

#include <algorithm>

#include "zetsettings/platform/posix/MachineKey.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/StoreSchema.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

// The store this thread found last from a predefined root. Holding it keeps the catalog from
// closing it; a thread that moves to another store lets it go.
struct RecentStore {
    std::string spelling;
    std::shared_ptr<Store> store;

    bool answers(const char* directory) const
    {
        return store && store->belongsToThisProcess() && !store->closed() && spelling == directory;
    }
    ~RecentStore();
};

// Set once the thread's RecentStore is gone, for calls from destructors that run after it.
thread_local bool recentStoreGone = false;
thread_local RecentStore recentStore;

RecentStore::~RecentStore()
{
    recentStoreGone = true;
}

// The machine key comes with the store, made by a process that may write it; one already there
// is left as it is, usable or not.
void makeKeyIfAbsent(const std::string& directory)
{
    MachineKey key;
    (void)key.loadOrCreate(directory);
}

std::string realPathOf(const std::string& directory)
{
    char resolved[PATH_MAX];
    if (!realpath(directory.c_str(), resolved))
        throw StoreFailure(win32ErrorOfLmdb(errno), errno);
    return resolved;
}

}  // namespace

const size_t StoreCatalog::kStoresKept;

StoreCatalog& StoreCatalog::instance()
{
    // Never destroyed: stores stay usable by destructors that run at exit.
    static StoreCatalog* catalog = [] {
        StoreCatalog* created = new StoreCatalog;
        // Handlers run before a fork in the reverse order of registration. The catalog's lock
        // is taken before the handle table's everywhere else (a store opened while handles are
        // handed out), so the table registers first and is locked last.
        HandleTable::instance();
        pthread_atfork(&StoreCatalog::lockForFork, &StoreCatalog::unlockAfterFork, &StoreCatalog::unlockAfterFork);
        return created;
    }();
    return *catalog;
}

StoreCatalog::StoreCatalog() : m_process(ThisProcess::id())
{
}

void StoreCatalog::lockForFork()
{
    instance().m_mutex.lock();
}

void StoreCatalog::unlockAfterFork()
{
    instance().m_mutex.unlock();
}

std::shared_ptr<Store> StoreCatalog::current()
{
    const char* directory = storeDirectoryName();
    if (recentStoreGone)
        return forDirectory(directory);
    if (!recentStore.answers(directory)) {
        std::shared_ptr<Store> found = forDirectory(directory);
        recentStore.spelling = directory;
        recentStore.store = std::move(found);
    }
    return recentStore.store;
}

std::shared_ptr<Store> StoreCatalog::forDirectory(const std::string& directory)
{
    std::lock_guard<std::mutex> guard(m_mutex);
    if (m_process != ThisProcess::id()) {
        // The parent's stores are not ours to use, nor to close (Store's destructor knows).
        m_entries.clear();
        m_process = ThisProcess::id();
    }
    // A store closed after a failed remap is opened afresh; handles still on it follow.
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [](const Entry& entry) { return entry.store->closed(); }),
                    m_entries.end());
    if (std::shared_ptr<Store> known = find(directory))
        return known;
    return openByRealPath(directory);
}

std::shared_ptr<Store> StoreCatalog::find(const std::string& spelling) const
{
    for (const Entry& entry : m_entries) {
        if (std::find(entry.spellings.begin(), entry.spellings.end(), spelling) != entry.spellings.end())
            return entry.store;
    }
    return nullptr;
}

std::shared_ptr<Store> StoreCatalog::openByRealPath(const std::string& spelling)
{
    const int made = ensureStoreDirectory(spelling);
    if (made != 0)
        throw StoreFailure(win32ErrorOfLmdb(made), made);
    const std::string real = realPathOf(spelling);
    for (Entry& entry : m_entries) {
        if (entry.store->directory() == real) {
            entry.spellings.push_back(spelling);
            return entry.store;
        }
    }
    std::shared_ptr<Store> store(Store::open(real));
    StoreSchema::prepare(*store);
    if (store->writable())
        makeKeyIfAbsent(spelling);
    m_entries.push_back(Entry{{spelling}, store});
    closeUnused(store.get());
    return store;
}

void StoreCatalog::closeUnused(const Store* keep)
{
    if (m_entries.size() <= kStoresKept)
        return;
    // Only the catalog holds an unused store, and only under this lock can that change.
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [keep](const Entry& entry) {
                                       return entry.store.get() != keep && entry.store.use_count() == 1;
                                   }),
                    m_entries.end());
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
