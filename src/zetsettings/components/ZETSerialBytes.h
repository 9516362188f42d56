// The counted byte form shared by ZETBuf, ser_string and ZETMacAddress: the byte count as an
// unsigned 32-bit little-endian number, then the bytes. Self-delimiting, so the next member
// follows at once; an empty one is 00 00 00 00.
#ifndef ZETSETTINGS_COMPONENTS_ZETSERIALBYTES_H
#define ZETSETTINGS_COMPONENTS_ZETSERIALBYTES_H

#include <string>

#include "zetsettings/components/ZETBufferBChk.h"

namespace ZETSerialBytes {

// 4 plus the byte count.
int length(const std::string& bytes);
// Writes the form at dest and returns its length.
int write(const std::string& bytes, unsigned char* dest);
// Reads the form into bytes and returns 4 plus the count, or 0 when the count or the bytes
// are not all there. On failure bytes are unchanged; a count that was read stays consumed,
// as for wide text.
int read(const ZETBufferBChk& src, std::string& bytes);

} // namespace ZETSerialBytes

#endif
