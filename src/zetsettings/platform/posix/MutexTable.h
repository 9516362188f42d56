// The mutex handles of this process and the named objects behind them.
//
// Every CreateMutexW gives a handle of its own; the handles of one name share one object while
// any of them is open (and while a wait on it runs). Handle values are never reused, so a
// handle used after CloseHandle fails with ERROR_INVALID_HANDLE instead of reaching another
// object. One guard serialises the table and the in-process state of all objects; it is held
// across fork() so that the child finds it free and resets what the parent's threads held.
#ifndef ZETSETTINGS_PLATFORM_POSIX_MUTEXTABLE_H
#define ZETSETTINGS_PLATFORM_POSIX_MUTEXTABLE_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "zetsettings/platform/posix/MutexObject.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class MutexTable {
public:
    // Built on first use and never destroyed: static objects of the library use it while
    // they are built and destroyed.
    static MutexTable& instance();

    // A new handle; for a name, to the object that already has that name in this process if
    // there is one (`existed` then true).
    HANDLE open(const std::wstring& name, bool& existed);
    // Null for a handle that is not (or no longer) open.
    std::shared_ptr<MutexObject> find(HANDLE handle);
    bool close(HANDLE handle);

    std::mutex& guard() { return m_guard; }

private:
    MutexTable();
    static void beforeFork();
    static void afterForkInParent();
    static void afterForkInChild();
    void dropExpiredNames();

    std::mutex m_guard;
    std::map<std::uintptr_t, std::shared_ptr<MutexObject>> m_handles;
    std::map<std::wstring, std::weak_ptr<MutexObject>> m_named;
    std::uintptr_t m_nextHandle;
};

}  // namespace portable
}  // namespace zet

#endif
