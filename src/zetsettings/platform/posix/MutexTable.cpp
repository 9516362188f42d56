#include "zetsettings/platform/posix/MutexTable.h"

#include <pthread.h>

#include <set>
#include <thread>

namespace zet {
namespace portable {
namespace {

// Far from null and from small integers that stray casts produce; steps of four as Windows'.
const std::uintptr_t kFirstHandle = 0x5a000;
const std::uintptr_t kHandleStep = 4;

}  // namespace

MutexTable& MutexTable::instance()
{
    static MutexTable* table = new MutexTable;
    return *table;
}

MutexTable::MutexTable() : m_nextHandle(kFirstHandle)
{
    pthread_atfork(&MutexTable::beforeFork, &MutexTable::afterForkInParent, &MutexTable::afterForkInChild);
}

HANDLE MutexTable::open(const std::wstring& name, bool& existed)
{
    std::lock_guard<std::mutex> lock(m_guard);
    std::shared_ptr<MutexObject> object;
    if (!name.empty()) {
        dropExpiredNames();
        auto found = m_named.find(name);
        if (found != m_named.end())
            object = found->second.lock();
    }
    existed = object != nullptr;
    if (!object) {
        object = std::make_shared<MutexObject>(name);
        if (!name.empty())
            m_named[name] = object;
    }
    const std::uintptr_t handle = m_nextHandle;
    m_handles[handle] = object;
    m_nextHandle += kHandleStep;
    return reinterpret_cast<HANDLE>(handle);
}

std::shared_ptr<MutexObject> MutexTable::find(HANDLE handle)
{
    std::lock_guard<std::mutex> lock(m_guard);
    auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_handles.end() ? nullptr : found->second;
}

bool MutexTable::close(HANDLE handle)
{
    std::shared_ptr<MutexObject> object;
    {
        std::lock_guard<std::mutex> lock(m_guard);
        auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == m_handles.end())
            return false;
        object = std::move(found->second);
        m_handles.erase(found);
    }
    // The object may go here, releasing its lock file: outside the guard, as it touches files.
    object.reset();
    std::lock_guard<std::mutex> lock(m_guard);
    dropExpiredNames();
    return true;
}

void MutexTable::dropExpiredNames()
{
    for (auto it = m_named.begin(); it != m_named.end();) {
        if (it->second.expired())
            it = m_named.erase(it);
        else
            ++it;
    }
}

void MutexTable::beforeFork()
{
    instance().m_guard.lock();
}

void MutexTable::afterForkInParent()
{
    instance().m_guard.unlock();
}

void MutexTable::afterForkInChild()
{
    MutexTable& table = instance();
    std::set<MutexObject*> seen;
    auto forget = [&seen](const std::shared_ptr<MutexObject>& object) {
        if (object && seen.insert(object.get()).second)
            object->forgetAfterFork(std::this_thread::get_id());
    };
    for (auto& entry : table.m_handles)
        forget(entry.second);
    // Also the objects whose handles are closed while a parent thread still waited on them:
    // that thread's reference lives on in the child's memory and keeps the name in use.
    for (auto& entry : table.m_named)
        forget(entry.second.lock());
    table.m_guard.unlock();
}

}  // namespace portable
}  // namespace zet
