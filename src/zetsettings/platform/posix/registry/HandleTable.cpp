#include "zetsettings/platform/posix/registry/HandleTable.h"

#include <pthread.h>

#include "zetsettings/platform/posix/registry/StoreFailure.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

// Generations stay below the top bit, where the predefined roots live.
const uintptr_t kMaxGeneration = UINTPTR_MAX >> 21;

uintptr_t nextGeneration(uintptr_t generation)
{
    return generation >= kMaxGeneration ? 1 : generation + 1;
}

}  // namespace

const unsigned HandleTable::kSlotBits;
const size_t HandleTable::kMaxSlots;

HandleTable& HandleTable::instance()
{
    // Never destroyed: handles may still be closed by destructors that run at exit.
    static HandleTable* table = [] {
        HandleTable* created = new HandleTable;
        pthread_atfork(&HandleTable::lockForFork, &HandleTable::unlockAfterFork, &HandleTable::unlockAfterFork);
        return created;
    }();
    return *table;
}

void HandleTable::lockForFork()
{
    instance().m_mutex.lock();
}

void HandleTable::unlockAfterFork()
{
    instance().m_mutex.unlock();
}

HandleTable::HandleTable() = default;

HKEY HandleTable::encode(size_t slot, uintptr_t generation)
{
    return reinterpret_cast<HKEY>((generation << kSlotBits) | (slot + 1));
}

bool HandleTable::decode(HKEY handle, size_t& slot) const
{
    const uintptr_t value = reinterpret_cast<uintptr_t>(handle);
    const uintptr_t slotPart = value & ((uintptr_t(1) << kSlotBits) - 1);
    if (slotPart == 0 || slotPart > m_slots.size())
        return false;
    slot = slotPart - 1;
    return m_slots[slot].key && m_slots[slot].generation == (value >> kSlotBits);
}

HKEY HandleTable::add(std::shared_ptr<OpenKey> key)
{
    std::lock_guard<std::mutex> guard(m_mutex);
    size_t slot;
    if (!m_free.empty()) {
        slot = m_free.back();
        m_free.pop_back();
    } else if (m_slots.size() < kMaxSlots) {
        slot = m_slots.size();
        m_slots.emplace_back();
    } else {
        throw StoreFailure(ERROR_NOT_ENOUGH_MEMORY);
    }
    Slot& entry = m_slots[slot];
    entry.generation = nextGeneration(entry.generation);
    entry.key = std::move(key);
    ++m_open;
    return encode(slot, entry.generation);
}

std::shared_ptr<OpenKey> HandleTable::find(HKEY handle) const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    size_t slot;
    if (!decode(handle, slot))
        return nullptr;
    return m_slots[slot].key;
}

bool HandleTable::remove(HKEY handle)
{
    std::shared_ptr<OpenKey> closing;  // released outside the lock
    std::lock_guard<std::mutex> guard(m_mutex);
    size_t slot;
    if (!decode(handle, slot))
        return false;
    closing = std::move(m_slots[slot].key);
    m_slots[slot].key.reset();
    m_free.push_back(slot);
    --m_open;
    return true;
}

size_t HandleTable::openCount() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_open;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
