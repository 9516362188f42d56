#include "zetsettings/platform/posix/registry/Store.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>

#include "zetsettings/platform/posix/StoreFiles.h"
#include "zetsettings/platform/posix/registry/FileSystemCheck.h"
#include "zetsettings/platform/posix/registry/RecordKeys.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const unsigned int kWritableFlags = MDB_NOTLS | MDB_NOMETASYNC;
const unsigned int kReadOnlyFlags = MDB_NOTLS | MDB_RDONLY | MDB_NOLOCK;
const mode_t kFileMode = 0644;
const unsigned int kMaxReaders = 510;
const size_t kIdleReaderLimit = 64;
const size_t kDefaultInitialMap = size_t(16) << 20;
const size_t kMinimumMap = size_t(64) << 10;
const size_t kMaximumMap = sizeof(size_t) > 4 ? size_t(1) << 40 : size_t(1) << 30;

uint64_t nextSerial()
{
    static std::atomic<uint64_t> last{0};
    return ++last;
}

size_t initialMapSize()
{
    const char* configured = getenv("ZET_REGISTRY_INITIAL_MAP");
    if (!configured || !*configured)
        return kDefaultInitialMap;
    char* end = nullptr;
    const unsigned long long bytes = strtoull(configured, &end, 10);
    if (*end != '\0')
        return kDefaultInitialMap;
    return std::min<unsigned long long>(std::max<unsigned long long>(bytes, kMinimumMap), kMaximumMap);
}

bool exists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

bool isRefusal(int rc)
{
    return rc == EACCES || rc == EPERM || rc == EROFS;
}

// By path, not by descriptor: a second descriptor on LMDB's files would drop its locks when
// closed. Whoever made them, root included, they are the store's.
void giveToStore(const std::string& directory)
{
    StoreOwnership store;
    if (!store.readFrom(directory))
        return;
    store.adopt(directory + "/data.mdb", store.dataMode());
    store.adopt(directory + "/lock.mdb", store.dataMode());
}

}  // namespace

Store::Store(const std::string& directory)
    : m_directory(directory), m_serial(nextSerial()), m_owner(ThisProcess::id())
{
}

std::unique_ptr<Store> Store::open(const std::string& directory)
{
    if (FileSystemCheck::isOnNetwork(directory))
        throw StoreFailure(ERROR_NOT_SUPPORTED);
    std::unique_ptr<Store> store(new Store(directory));
    // A store restored from a backup comes without its lock file.
    const bool creating = !exists(directory + "/data.mdb") || !exists(directory + "/lock.mdb");
    int rc = store->openEnvironment(kWritableFlags);
    if (isRefusal(rc)) {
        store->m_writable = false;
        const int refusal = rc;
        rc = store->openEnvironment(kReadOnlyFlags);
        // Files that could not be made are not there to read: the refusal names the problem.
        if (rc == ENOENT)
            rc = refusal;
    }
    checkLmdb(rc);
    store->checkFileHoldsData();
    if (store->m_writable) {
        if (creating)
            giveToStore(directory);
        store->clearStaleReaders();
        int descriptor = -1;
        mdb_env_get_fd(store->m_env, &descriptor);
        store->m_writerLock.reset(new WriterLock(descriptor));
    }
    store->openDatabase();
    return store;
}

Store::~Store()
{
    if (!belongsToThisProcess() || !m_env || m_closed)
        return;
    if (MDB_txn* spare = m_spareReader.load())
        mdb_txn_abort(spare);
    for (MDB_txn* reader : m_idleReaders)
        mdb_txn_abort(reader);
    mdb_env_close(m_env);
}

void Store::checkFileHoldsData() const
{
    // A data file cut short behind valid meta pages would fault on first read of the map.
    MDB_envinfo info;
    MDB_stat statistics;
    mdb_env_info(m_env, &info);
    checkLmdb(mdb_env_stat(m_env, &statistics));
    int descriptor = -1;
    checkLmdb(mdb_env_get_fd(m_env, &descriptor));
    struct stat file;
    if (fstat(descriptor, &file) != 0)
        throw StoreFailure(win32ErrorOfLmdb(errno), errno);
    const unsigned long long needed = (static_cast<unsigned long long>(info.me_last_pgno) + 1) * statistics.ms_psize;
    if (static_cast<unsigned long long>(file.st_size) < needed)
        throw StoreFailure(ERROR_BADDB, MDB_INVALID);
}

int Store::openEnvironment(unsigned int flags)
{
    MDB_env* env = nullptr;
    int rc = mdb_env_create(&env);
    if (rc != MDB_SUCCESS)
        return rc;
    mdb_env_set_maxreaders(env, kMaxReaders);
    mdb_env_set_mapsize(env, initialMapSize());
    rc = mdb_env_open(env, m_directory.c_str(), flags, kFileMode);
    if (rc == MDB_SUCCESS && mdb_env_get_maxkeysize(env) < static_cast<int>(RecordKeys::kLongestKey))
        rc = MDB_BAD_VALSIZE;
    if (rc != MDB_SUCCESS) {
        mdb_env_close(env);
        return rc;
    }
    m_env = env;
    return MDB_SUCCESS;
}

void Store::openDatabase()
{
    for (;;) {
        MDB_txn* txn = nullptr;
        int rc = mdb_txn_begin(m_env, nullptr, MDB_RDONLY, &txn);
        if (rc == MDB_MAP_RESIZED) {
            checkLmdb(mdb_env_set_mapsize(m_env, 0));
            continue;
        }
        checkLmdb(rc);
        rc = mdb_dbi_open(txn, nullptr, 0, &m_dbi);
        if (rc == MDB_SUCCESS)
            rc = mdb_txn_commit(txn);
        else
            mdb_txn_abort(txn);
        checkLmdb(rc);
        return;
    }
}

size_t Store::mapSize() const
{
    MDB_envinfo info;
    mdb_env_info(m_env, &info);
    return info.me_mapsize;
}

int Store::startReader(MDB_txn*& txn)
{
    txn = m_spareReader.exchange(nullptr);
    if (!txn) {
        std::lock_guard<std::mutex> guard(m_idleReadersMutex);
        if (!m_idleReaders.empty()) {
            txn = m_idleReaders.back();
            m_idleReaders.pop_back();
        }
    }
    if (!txn)
        return mdb_txn_begin(m_env, nullptr, MDB_RDONLY, &txn);
    const int rc = mdb_txn_renew(txn);
    if (rc != MDB_SUCCESS) {
        mdb_txn_abort(txn);
        txn = nullptr;
    }
    return rc;
}

void Store::finishReader(MDB_txn* txn)
{
    mdb_txn_reset(txn);
    MDB_txn* noSpare = nullptr;
    if (m_spareReader.compare_exchange_strong(noSpare, txn))
        return;
    {
        std::lock_guard<std::mutex> guard(m_idleReadersMutex);
        if (m_idleReaders.size() < kIdleReaderLimit) {
            m_idleReaders.push_back(txn);
            return;
        }
    }
    mdb_txn_abort(txn);
}

void Store::clearStaleReaders()
{
    if (!m_writable)
        return;
    int cleared = 0;
    mdb_reader_check(m_env, &cleared);
}

void Store::adoptMapSize()
{
    ExclusiveMapLock exclusive(m_mapLock);
    refuseIfClosed();
    remap(0);
}

void Store::growMap(size_t observedSize)
{
    ExclusiveMapLock exclusive(m_mapLock);
    refuseIfClosed();
    if (mapSize() != observedSize)
        return;  // another thread grew it meanwhile
    if (observedSize >= kMaximumMap)
        throw StoreFailure(ERROR_DISK_FULL, MDB_MAP_FULL);
    remap(std::min(observedSize * 2, kMaximumMap));
}

// Under the exclusive map lock, so no transaction of this process is running.
void Store::remap(size_t size)
{
    const int rc = mdb_env_set_mapsize(m_env, size);
    if (rc != MDB_SUCCESS)
        closeAfterLostMap();
    checkLmdb(rc);
}

// LMDB unmaps the file before it maps it again and keeps no map to go back to when that fails:
// any further transaction would touch a null map. The environment is closed while nothing uses
// it, and the catalog opens the store again.
void Store::closeAfterLostMap()
{
    if (MDB_txn* spare = m_spareReader.exchange(nullptr))
        mdb_txn_abort(spare);
    for (MDB_txn* reader : m_idleReaders)
        mdb_txn_abort(reader);
    m_idleReaders.clear();
    mdb_env_close(m_env);
    m_closed = true;
}

void Store::refuseIfClosed() const
{
    if (m_closed)
        throw StoreFailure(ERROR_REGISTRY_IO_FAILED);
}

// A transaction's hold of the map; none is given on a closed store.
uint64_t Store::lastCommitted()
{
    uint64_t view = 0;
    if (WriteBatch::transactionFor(*this, view))
        return view;
    lockMapUnlessClosed();
    MDB_envinfo info;
    mdb_env_info(m_env, &info);
    m_mapLock.unlockShared();
    return info.me_last_txnid;
}

void Store::lockMapUnlessClosed()
{
    m_mapLock.lockShared();
    if (m_closed) {
        m_mapLock.unlockShared();
        refuseIfClosed();
    }
}

// ---- transactions --------------------------------------------------------------------------

ReadTransaction::ReadTransaction(Store& store) : m_store(store)
{
    bool readersChecked = false;
    for (;;) {
        m_store.lockMapUnlessClosed();
        const int rc = m_store.startReader(m_txn);
        if (rc == MDB_SUCCESS)
            break;
        m_store.m_mapLock.unlockShared();
        if (rc == MDB_MAP_RESIZED) {
            m_store.adoptMapSize();
        } else if (rc == MDB_READERS_FULL && !readersChecked) {
            m_store.clearStaleReaders();
            readersChecked = true;
        } else {
            checkLmdb(rc);
        }
    }
    m_snapshotId = mdb_txn_id(m_txn);
}

ReadTransaction::ReadTransaction(Store& store, MDB_txn* batch, uint64_t view)
    : m_store(store), m_txn(batch), m_snapshotId(view), m_borrowed(true)
{
}

ReadTransaction::~ReadTransaction()
{
    if (m_borrowed)
        return;
    m_store.finishReader(m_txn);
    m_store.m_mapLock.unlockShared();
}

MDB_dbi ReadTransaction::dbi() const
{
    return m_store.m_dbi;
}

bool ReadTransaction::stillValid() const
{
    if (m_borrowed || !m_store.lockless())
        return true;
    MDB_envinfo info;
    mdb_env_info(m_store.m_env, &info);
    return info.me_last_txnid <= m_snapshotId + 1;
}

WriteTransaction::WriteTransaction(Store& store) : m_store(store), m_turn(*store.m_writerLock)
{
    begin();
}

WriteTransaction::~WriteTransaction()
{
    end();
}

void WriteTransaction::begin()
{
    for (;;) {
        m_store.lockMapUnlessClosed();
        const int rc = mdb_txn_begin(m_store.m_env, nullptr, 0, &m_txn);
        if (rc == MDB_SUCCESS) {
            m_holdsMap = true;
            return;
        }
        m_txn = nullptr;
        m_store.m_mapLock.unlockShared();
        if (rc != MDB_MAP_RESIZED)
            checkLmdb(rc);
        m_store.adoptMapSize();
    }
}

void WriteTransaction::end()
{
    if (m_txn)
        mdb_txn_abort(m_txn);
    m_txn = nullptr;
    if (m_holdsMap)
        m_store.m_mapLock.unlockShared();
    m_holdsMap = false;
}

void WriteTransaction::restart(bool grow)
{
    m_store.refuseIfClosed();
    const size_t observedSize = m_store.mapSize();
    end();
    if (grow)
        m_store.growMap(observedSize);
    begin();
}

MDB_dbi WriteTransaction::dbi() const
{
    return m_store.m_dbi;
}

int WriteTransaction::commit()
{
    MDB_txn* txn = m_txn;
    m_txn = nullptr;
    return mdb_txn_commit(txn);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
