// The registry functions of the portable Win32 subset. Each one resolves its handle, checks
// rights and arguments as Windows does, and runs in one transaction: a read snapshot, or one
// write transaction committed before it returns; inside a write batch of the thread, the
// batch's transaction (WriteBatch.h). Nothing throws past this file.
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/ChildEnumerator.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/KeyAccess.h"
#include "zetsettings/platform/posix/registry/KeyClock.h"
#include "zetsettings/platform/posix/registry/KeyPath.h"
#include "zetsettings/platform/posix/registry/PathCache.h"
#include "zetsettings/platform/posix/registry/RegistryTree.h"
#include "zetsettings/platform/posix/registry/StoreSchema.h"
#include "zetsettings/platform/posix/registry/ValueMemo.h"
#include "zetsettings/platform/posix/registry/ValueOutput.h"

using namespace zet::portable::registry;

namespace {

// REG_OPTION_OPEN_LINK: there are no links here, so there is nothing else to open.
const DWORD kOpenLinkOption = 0x8;

template <class Call>
LSTATUS guarded(Call&& call) noexcept
{
    try {
        return call();
    } catch (const StoreFailure& failure) {
        return failure.win32Error();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_REGISTRY_IO_FAILED;
    }
}

// A count the caller passes in and gets back; put back before a snapshot is read again.
class InOutCount {
public:
    explicit InOutCount(LPDWORD count) : m_count(count), m_given(count ? *count : 0) {}
    void restore() const
    {
        if (m_count)
            *m_count = m_given;
    }

private:
    LPDWORD m_count;
    DWORD m_given;
};

// Where an enumeration of the key continues; a predefined root keeps no position. The call takes
// the position out of the open key and puts it back when done, holding the key's lock only for
// the exchange: a call that waits for the store's map under that lock would deadlock against a
// batch, which holds the map while it enumerates. Another thread's call on the same handle in
// the meantime starts from no position, which costs it a seek, not a wrong answer.
class EnumerationPosition {
public:
    EnumerationPosition(const KeyReference& key, EnumerationCursor OpenKey::*which) : m_open(key.open), m_which(which)
    {
        if (m_open)
            exchange();
    }
    ~EnumerationPosition()
    {
        if (m_open)
            exchange();
    }
    EnumerationPosition(const EnumerationPosition&) = delete;
    EnumerationPosition& operator=(const EnumerationPosition&) = delete;

    EnumerationCursor& get() { return m_position; }

private:
    void exchange()
    {
        const std::lock_guard<std::mutex> lock(m_open->enumerationMutex);
        std::swap(m_position, m_open.get()->*m_which);
    }

    std::shared_ptr<OpenKey> m_open;
    EnumerationCursor OpenKey::*m_which;
    EnumerationCursor m_position;
};

HKEY handOut(const KeyReference& base, uint64_t id, REGSAM access)
{
    return HandleTable::instance().add(std::make_shared<OpenKey>(base.store, id, access));
}

LONG resolveWithPath(HKEY hKey, LPCWSTR subKey, KeyReference& key, KeyPath& path)
{
    const LONG resolved = KeyAccess::resolve(hKey, key);
    if (resolved != ERROR_SUCCESS)
        return resolved;
    return KeyPath::parse(subKey, hKey == HKEY_CLASSES_ROOT, path);
}

// The key that a subkey path names below an open key, as the open and create calls look it up:
// the path is parsed and walked only when this thread hasn't found it in the store's current
// state already.
struct SubkeyLookup {
    KeyReference base;
    KeyPath path;  // parsed only when not remembered
    PathCache::Found found;
    bool remembered = false;

    LONG start(HKEY hKey, LPCWSTR subKey)
    {
        const LONG resolved = KeyAccess::resolve(hKey, base);
        if (resolved != ERROR_SUCCESS)
            return resolved;
        remembered = PathCache::find(*base.store, base.id, subKey, found);
        if (remembered)
            return ERROR_SUCCESS;
        const LONG parsed = KeyPath::parse(subKey, hKey == HKEY_CLASSES_ROOT, path);
        found.emptyPath = path.empty();
        return parsed;
    }

    LONG walk(LPCWSTR subKey)
    {
        if (remembered)
            return ERROR_SUCCESS;
        return base.store->read([&](ReadTransaction& snapshot) {
            const LONG status = RegistryTree(snapshot.txn(), snapshot.dbi()).openPath(base.id, path, found.id);
            if (status == ERROR_SUCCESS)
                PathCache::remember(*base.store, base.id, subKey, found, snapshot.snapshotId());
            return status;
        });
    }

    // A predefined root opened as itself is handed back as it came.
    bool namesRoot() const { return base.isRoot() && found.emptyPath; }
};

LONG openKey(HKEY hKey, LPCWSTR subKey, REGSAM desired, PHKEY result)
{
    if (!result)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    SubkeyLookup key;
    LONG status = key.start(hKey, subKey);
    if (status != ERROR_SUCCESS)
        return status;
    const REGSAM access = KeyAccess::normalize(desired, key.base.store->writable());
    if (KeyAccess::asksToWrite(access) && !key.base.store->writable())
        return ERROR_ACCESS_DENIED;
    status = key.walk(subKey);
    if (status != ERROR_SUCCESS)
        return status;
    *result = key.namesRoot() ? hKey : handOut(key.base, key.found.id, access);
    return ERROR_SUCCESS;
}

LONG createKey(HKEY hKey, LPCWSTR subKey, DWORD options, REGSAM desired, PHKEY result, LPDWORD disposition)
{
    if (!result)
        return ERROR_BADKEY;
    *result = nullptr;
    if (options & ~kOpenLinkOption)
        return ERROR_NOT_SUPPORTED;  // volatile keys and backup semantics are not offered
    SubkeyLookup key;
    LONG status = key.start(hKey, subKey);
    if (status != ERROR_SUCCESS)
        return status;
    const REGSAM access = KeyAccess::normalize(desired, key.base.store->writable());
    if (KeyAccess::asksToWrite(access) && !key.base.store->writable())
        return ERROR_ACCESS_DENIED;
    bool created = false;
    // Most calls find the key there already: that takes no write transaction.
    status = key.walk(subKey);
    if (status == ERROR_FILE_NOT_FOUND) {
        status = key.base.store->write([&](WriteTransaction& transaction) {
            return RegistryTree(transaction.txn(), transaction.dbi())
                .createPath(key.base.id, key.path, key.found.id, created);
        });
    }
    if (status != ERROR_SUCCESS)
        return status;
    *result = key.namesRoot() ? hKey : handOut(key.base, key.found.id, access);
    if (disposition)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LONG closeKey(HKEY hKey)
{
    if (StoreSchema::rootId(hKey))
        return ERROR_SUCCESS;
    return HandleTable::instance().remove(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG missingValueOrKey(const RegistryTree& tree, uint64_t key, LONG missing)
{
    return tree.keyExists(key) ? missing : ERROR_KEY_DELETED;
}

LONG queryValue(HKEY hKey, LPCWSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    if (reserved || (data && !size))
        return ERROR_INVALID_PARAMETER;
    KeyReference key;
    const LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_QUERY_VALUE))
        return ERROR_ACCESS_DENIED;
    ValueRecordView remembered;
    if (ValueMemo::find(*key.store, key.id, valueName, remembered))
        return ValueOutput::deliver(remembered, type, data, size);
    const FoldedValueName folded(valueName);
    const InOutCount capacity(size);
    return key.store->read([&](ReadTransaction& snapshot) -> LONG {
        capacity.restore();
        RegistryTree tree(snapshot.txn(), snapshot.dbi());
        MDB_val record;
        if (!tree.findValueRecord(key.id, folded.view(), record))
            return missingValueOrKey(tree, key.id, ERROR_FILE_NOT_FOUND);
        const ValueRecordView value = ValueRecordView::parse(record);
        ValueMemo::remember(*key.store, key.id, record, snapshot.snapshotId());
        return ValueOutput::deliver(value, type, data, size);
    });
}

LONG setValue(HKEY hKey, LPCWSTR valueName, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
{
    if (reserved)
        return ERROR_INVALID_PARAMETER;
    if (!data && size)
        return ERROR_NOACCESS;
    KeyReference key;
    const LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_SET_VALUE))
        return ERROR_ACCESS_DENIED;
    const RegistryName name = RegistryName::ofValue(valueName);
    if (name.original.size() > RegistryName::kMaxValueNameUnits)
        return ERROR_INVALID_PARAMETER;
    const std::string stored = ValueOutput::toStored(type, data, size);
    return key.store->write([&](WriteTransaction& transaction) -> LONG {
        RegistryTree tree(transaction.txn(), transaction.dbi());
        if (!tree.keyExists(key.id))
            return ERROR_KEY_DELETED;
        tree.setValue(key.id, name, type, stored);
        return ERROR_SUCCESS;
    });
}

LONG deleteValue(HKEY hKey, LPCWSTR valueName)
{
    KeyReference key;
    const LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_SET_VALUE))
        return ERROR_ACCESS_DENIED;
    const FoldedValueName folded(valueName);
    return key.store->write([&](WriteTransaction& transaction) -> LONG {
        RegistryTree tree(transaction.txn(), transaction.dbi());
        if (!tree.keyExists(key.id))
            return ERROR_KEY_DELETED;
        return tree.deleteValue(key.id, folded.view()) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}

// Keys have no class here: an empty one is what every key reports.
LONG deliverEmptyClass(LPWSTR className, LPDWORD classUnits)
{
    if (!classUnits)
        return ERROR_SUCCESS;
    if (className) {
        if (*classUnits == 0)
            return ERROR_MORE_DATA;
        className[0] = 0;
    }
    *classUnits = 0;
    return ERROR_SUCCESS;
}

LONG enumKey(HKEY hKey, DWORD index, LPWSTR name, LPDWORD nameUnits, LPDWORD reserved, LPWSTR className,
             LPDWORD classUnits, PFILETIME lastWrite)
{
    if (!name || !nameUnits || reserved)
        return ERROR_INVALID_PARAMETER;
    KeyReference key;
    const LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_ENUMERATE_SUB_KEYS))
        return ERROR_ACCESS_DENIED;
    EnumerationPosition position(key, &OpenKey::subkeyPosition);
    const InOutCount nameCapacity(nameUnits), classCapacity(classUnits);
    return key.store->read([&](ReadTransaction& snapshot) -> LONG {
        nameCapacity.restore();
        classCapacity.restore();
        RegistryTree tree(snapshot.txn(), snapshot.dbi());
        ChildEnumerator subkeys(snapshot, RecordKeys::kSubkey, key.id);
        MDB_val data;
        if (!subkeys.at(index, position.get(), data))
            return missingValueOrKey(tree, key.id, ERROR_NO_MORE_ITEMS);
        const NamedRecordView record = NamedRecordView::parse(data);
        LONG result = ValueOutput::deliverName(record, name, nameUnits);
        if (result == ERROR_SUCCESS)
            result = deliverEmptyClass(className, classUnits);
        KeyInfo info;
        if (result == ERROR_SUCCESS && lastWrite) {
            if (!tree.keyInfo(SubkeyEntry::idOf(record), info))
                throwCorruptRecord();
            *lastWrite = KeyClock::toFileTime(info.lastWrite);
        }
        return result;
    });
}

LONG enumValue(HKEY hKey, DWORD index, LPWSTR name, LPDWORD nameUnits, LPDWORD reserved, LPDWORD type,
               LPBYTE data, LPDWORD size)
{
    if (!name || !nameUnits || reserved || (data && !size))
        return ERROR_INVALID_PARAMETER;
    KeyReference key;
    const LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_QUERY_VALUE))
        return ERROR_ACCESS_DENIED;
    EnumerationPosition position(key, &OpenKey::valuePosition);
    auto deliverValue = [&](const MDB_val& record, uint64_t snapshotId) -> LONG {
        const ValueRecordView value = ValueRecordView::parse(record);
        ValueMemo::remember(*key.store, key.id, record, snapshotId);
        const LONG result = ValueOutput::deliverName(value.named, name, nameUnits);
        if (result != ERROR_SUCCESS)
            return result;
        return ValueOutput::deliver(value, type, data, size);
    };
    const uint64_t lastCommitted = key.store->lastCommitted();
    MDB_val copy;
    if (ChildEnumerator::readBefore(position.get(), index, lastCommitted, copy))
        return deliverValue(copy, lastCommitted);
    const InOutCount nameCapacity(nameUnits), dataCapacity(size);
    return key.store->read([&](ReadTransaction& snapshot) -> LONG {
        nameCapacity.restore();
        dataCapacity.restore();
        RegistryTree tree(snapshot.txn(), snapshot.dbi());
        ChildEnumerator values(snapshot, RecordKeys::kValue, key.id);
        MDB_val record;
        if (!values.at(index, position.get(), record, key.open != nullptr))
            return missingValueOrKey(tree, key.id, ERROR_NO_MORE_ITEMS);
        return deliverValue(record, snapshot.snapshotId());
    });
}

struct KeyStatistics {
    DWORD subkeys = 0;
    DWORD longestSubkeyName = 0;
    DWORD values = 0;
    DWORD longestValueName = 0;
    DWORD largestData = 0;
    uint64_t lastWrite = 0;
};

template <class Number>
void keepLarger(DWORD& largest, Number candidate)
{
    if (candidate > largest)
        largest = static_cast<DWORD>(candidate);
}

LONG gatherStatistics(ReadTransaction& snapshot, uint64_t id, KeyStatistics& statistics)
{
    statistics = KeyStatistics();
    KeyInfo info;
    if (!RegistryTree(snapshot.txn(), snapshot.dbi()).keyInfo(id, info))
        return ERROR_KEY_DELETED;
    statistics.lastWrite = info.lastWrite;
    ChildEnumerator(snapshot, RecordKeys::kSubkey, id).forEach([&](const MDB_val& data) {
        ++statistics.subkeys;
        keepLarger(statistics.longestSubkeyName, ValueOutput::nameUnits(NamedRecordView::parse(data)));
    });
    ChildEnumerator(snapshot, RecordKeys::kValue, id).forEach([&](const MDB_val& data) {
        const ValueRecordView value = ValueRecordView::parse(data);
        ++statistics.values;
        keepLarger(statistics.longestValueName, ValueOutput::nameUnits(value.named));
        keepLarger(statistics.largestData, ValueOutput::callerSize(value));
    });
    return ERROR_SUCCESS;
}

void deliverNumber(LPDWORD out, DWORD number)
{
    if (out)
        *out = number;
}

LONG queryInfo(HKEY hKey, LPWSTR className, LPDWORD classUnits, LPDWORD reserved, LPDWORD subkeys,
               LPDWORD longestSubkeyName, LPDWORD longestClass, LPDWORD values, LPDWORD longestValueName,
               LPDWORD largestData, LPDWORD securityDescriptorSize, PFILETIME lastWrite)
{
    if (reserved)
        return ERROR_INVALID_PARAMETER;
    KeyReference key;
    LONG status = KeyAccess::resolve(hKey, key);
    if (status != ERROR_SUCCESS)
        return status;
    if (!key.allows(KEY_QUERY_VALUE))
        return ERROR_ACCESS_DENIED;
    KeyStatistics statistics;
    status = key.store->read([&](ReadTransaction& snapshot) { return gatherStatistics(snapshot, key.id, statistics); });
    if (status != ERROR_SUCCESS)
        return status;
    status = deliverEmptyClass(className, classUnits);
    deliverNumber(subkeys, statistics.subkeys);
    deliverNumber(longestSubkeyName, statistics.longestSubkeyName);
    deliverNumber(longestClass, 0);
    deliverNumber(values, statistics.values);
    deliverNumber(longestValueName, statistics.longestValueName);
    deliverNumber(largestData, statistics.largestData);
    deliverNumber(securityDescriptorSize, 0);  // no security descriptors are kept
    if (lastWrite)
        *lastWrite = KeyClock::toFileTime(statistics.lastWrite);
    return status;
}

LONG deleteKey(HKEY hKey, LPCWSTR subKey)
{
    if (!subKey)
        return ERROR_INVALID_PARAMETER;
    KeyReference key;
    KeyPath path;
    const LONG status = resolveWithPath(hKey, subKey, key, path);
    if (status != ERROR_SUCCESS)
        return status;
    if (key.isRoot() && path.empty())
        return ERROR_ACCESS_DENIED;
    return key.store->write([&](WriteTransaction& transaction) -> LONG {
        RegistryTree tree(transaction.txn(), transaction.dbi());
        uint64_t id = 0;
        const LONG found = tree.openPath(key.id, path, id);
        if (found != ERROR_SUCCESS)
            return found;
        if (tree.hasSubkeys(id))
            return ERROR_ACCESS_DENIED;
        tree.deleteKey(id);
        return ERROR_SUCCESS;
    });
}

LONG deleteTree(HKEY hKey, LPCWSTR subKey)
{
    KeyReference key;
    KeyPath path;
    const LONG status = resolveWithPath(hKey, subKey, key, path);
    if (status != ERROR_SUCCESS)
        return status;
    // Without a subkey the key stays and loses its subkeys and values, through this handle.
    const bool keepKey = subKey == nullptr;
    if (keepKey && !key.allows(KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE))
        return ERROR_ACCESS_DENIED;
    if (!keepKey && key.isRoot() && path.empty())
        return ERROR_ACCESS_DENIED;
    return key.store->write([&](WriteTransaction& transaction) -> LONG {
        RegistryTree tree(transaction.txn(), transaction.dbi());
        uint64_t id = 0;
        const LONG found = tree.openPath(key.id, path, id);
        if (found != ERROR_SUCCESS)
            return found;
        tree.deleteTree(id, keepKey);
        return ERROR_SUCCESS;
    });
}

}  // namespace

extern "C" {

LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, LPWSTR, DWORD dwOptions, REGSAM samDesired,
                        const SECURITY_ATTRIBUTES*, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    return guarded([&] { return createKey(hKey, lpSubKey, dwOptions, samDesired, phkResult, lpdwDisposition); });
}

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult)
{
    return guarded([&] { return openKey(hKey, lpSubKey, samDesired, phkResult); });
}

LSTATUS RegCloseKey(HKEY hKey)
{
    return guarded([&] { return closeKey(hKey); });
}

LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData,
                         LPDWORD lpcbData)
{
    return guarded([&] { return queryValue(hKey, lpValueName, lpReserved, lpType, lpData, lpcbData); });
}

LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                       DWORD cbData)
{
    return guarded([&] { return setValue(hKey, lpValueName, Reserved, dwType, lpData, cbData); });
}

LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName)
{
    return guarded([&] { return deleteValue(hKey, lpValueName); });
}

LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName, LPDWORD lpcchName, LPDWORD lpReserved,
                      LPWSTR lpClass, LPDWORD lpcchClass, PFILETIME lpftLastWriteTime)
{
    return guarded([&] {
        return enumKey(hKey, dwIndex, lpName, lpcchName, lpReserved, lpClass, lpcchClass, lpftLastWriteTime);
    });
}

LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR lpValueName, LPDWORD lpcchValueName, LPDWORD lpReserved,
                      LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData)
{
    return guarded([&] {
        return enumValue(hKey, dwIndex, lpValueName, lpcchValueName, lpReserved, lpType, lpData, lpcbData);
    });
}

LSTATUS RegQueryInfoKeyW(HKEY hKey, LPWSTR lpClass, LPDWORD lpcchClass, LPDWORD lpReserved, LPDWORD lpcSubKeys,
                         LPDWORD lpcbMaxSubKeyLen, LPDWORD lpcbMaxClassLen, LPDWORD lpcValues,
                         LPDWORD lpcbMaxValueNameLen, LPDWORD lpcbMaxValueLen, LPDWORD lpcbSecurityDescriptor,
                         PFILETIME lpftLastWriteTime)
{
    return guarded([&] {
        return queryInfo(hKey, lpClass, lpcchClass, lpReserved, lpcSubKeys, lpcbMaxSubKeyLen, lpcbMaxClassLen,
                         lpcValues, lpcbMaxValueNameLen, lpcbMaxValueLen, lpcbSecurityDescriptor,
                         lpftLastWriteTime);
    });
}

LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR lpSubKey)
{
    return guarded([&] { return deleteKey(hKey, lpSubKey); });
}

LSTATUS RegDeleteTreeW(HKEY hKey, LPCWSTR lpSubKey)
{
    return guarded([&] { return deleteTree(hKey, lpSubKey); });
}

}  // extern "C"
