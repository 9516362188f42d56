#include "zetsettings/components/ZETProtectData.h"

#include "zetsettings/platform/Win32.h"

namespace {

// Read-only view of a buffer as the blob the Win32 functions take.
DATA_BLOB blobOf(const ZETBuf& buffer)
{
    DATA_BLOB blob;
    blob.cbData = static_cast<DWORD>(buffer.getSize());
    blob.pbData = const_cast<BYTE*>(buffer.getData());
    return blob;
}

ZETBuf takeOutput(DATA_BLOB& output)
{
    ZETBuf result(output.pbData, output.cbData);
    LocalFree(output.pbData);
    return result;
}

const DWORD kFlags = CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN;

}  // namespace

ZETBuf ZETProtectData::encryptData(const ZETBuf& data, const ZETBuf& extra)
{
    DATA_BLOB input = blobOf(data);
    DATA_BLOB entropy = blobOf(extra);
    DATA_BLOB output = {0, 0};
    if (!CryptProtectData(&input, L"", extra.isEmpty() ? 0 : &entropy, 0, 0, kFlags, &output))
        return ZETBuf();
    return takeOutput(output);
}

ZETBuf ZETProtectData::decryptData(const ZETBuf& data, const ZETBuf& extra)
{
    if (data.isEmpty())
        return ZETBuf();
    DATA_BLOB input = blobOf(data);
    DATA_BLOB entropy = blobOf(extra);
    DATA_BLOB output = {0, 0};
    if (!CryptUnprotectData(&input, 0, extra.isEmpty() ? 0 : &entropy, 0, 0, kFlags, &output))
        return ZETBuf();
    return takeOutput(output);
}
