// The process's open keys, behind opaque HKEY values.
//
// An HKEY is a slot number and the slot's generation: a closed handle, a handle closed twice,
// or any value that was never handed out is recognized and refused, never followed. Values
// never collide with the predefined roots. Thread-safe; a key closed by one thread while
// another uses it lives on until that use ends.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_HANDLETABLE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_HANDLETABLE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/OpenKey.h"

namespace zet {
namespace portable {
namespace registry {

class HandleTable {
public:
    static HandleTable& instance();

    // Throws StoreFailure (ERROR_NOT_ENOUGH_MEMORY) when every slot is taken.
    HKEY add(std::shared_ptr<OpenKey> key);
    // Null for anything but an open handle.
    std::shared_ptr<OpenKey> find(HKEY handle) const;
    bool remove(HKEY handle);
    size_t openCount() const;

    HandleTable();
    HandleTable(const HandleTable&) = delete;
    HandleTable& operator=(const HandleTable&) = delete;

private:
    struct Slot {
        uintptr_t generation = 0;
        std::shared_ptr<OpenKey> key;
    };

    static const unsigned kSlotBits = 20;
    static const size_t kMaxSlots = (size_t(1) << kSlotBits) - 1;

    // A child of fork() must find the table unlocked, whatever other threads were doing.
    static void lockForFork();
    static void unlockAfterFork();

    static HKEY encode(size_t slot, uintptr_t generation);
    bool decode(HKEY handle, size_t& slot) const;

    mutable std::mutex m_mutex;
    std::vector<Slot> m_slots;
    std::vector<size_t> m_free;
    size_t m_open = 0;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
