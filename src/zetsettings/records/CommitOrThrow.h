// For the operations that let CRegistryKey::Exception reach their caller: a batch whose commit
// fails has written nothing, and says so as a failed write would.
#ifndef ZETSETTINGS_RECORDS_COMMITORTHROW_H
#define ZETSETTINGS_RECORDS_COMMITORTHROW_H

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/platform/RegistryBatch.h"

namespace zet {
namespace records {

// Ends the batch; a nested one commits nothing yet and never throws.
inline void commitOrThrow(zet::RegistryBatch& batch, const wchar_t* valueName)
{
    const LONG code = batch.commit();
    if (code != ERROR_SUCCESS)
        throw JetByteTools::CRegistryKey::Exception(valueName, static_cast<DWORD>(code));
}

}  // namespace records
}  // namespace zet

#endif
