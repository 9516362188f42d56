// The registry writes of one operation, made durable together: on the portable registry one
// transaction with one commit when the outermost batch of the thread ends, which another
// process sees whole or not at all and a killed process leaves whole or not at all; on Windows
// nothing, and every call is its own as before.
//
// Inside a batch each registry call behaves as it does alone (a refused write fails and leaves
// nothing, the writes before it stay, the thread's reads see its writes); only when the writes
// reach the disk changes. Batches nest, and only the outermost one commits.
//
// From the first write on, the batch holds the store's writer lock until it ends. Open a batch
// only where the thread already holds every lock it will wait for until the batch ends: in the
// library, right after an operation has taken its mutex (and no operation holds both mutexes).
#ifndef ZETSETTINGS_PLATFORM_REGISTRYBATCH_H
#define ZETSETTINGS_PLATFORM_REGISTRYBATCH_H

#include "zetsettings/platform/Win32.h"

namespace zet {

class RegistryBatch {
public:
    RegistryBatch() { ZetRegBeginBatch(); }
    // Commits, also while an exception passes: writes made before it would have been
    // committed one by one.
    ~RegistryBatch()
    {
        if (!m_ended)
            ZetRegEndBatch(TRUE);
    }

    RegistryBatch(const RegistryBatch&) = delete;
    RegistryBatch& operator=(const RegistryBatch&) = delete;

    // Ends the batch: ERROR_SUCCESS once its writes are durable, else the error that lost them.
    LONG commit()
    {
        m_ended = true;
        return ZetRegEndBatch(TRUE);
    }
    // Ends the batch dropping its writes; false where they can't be dropped (on Windows, or in
    // a nested batch) and stay.
    bool discard()
    {
        m_ended = true;
        return ZetRegEndBatch(FALSE) == ERROR_SUCCESS;
    }

private:
    bool m_ended = false;
};

}  // namespace zet

#endif
