// Reads .reg files: "Windows Registry Editor Version 5.00" (UTF-16 little-endian with a byte
// order mark as Windows writes it, or UTF-8) and REGEDIT4 (8-bit text, taken as UTF-8).
//
// The reader is strict where Windows' editor skips silently: a file that is cut, mis-encoded,
// names a key outside the known roots, or holds a line it can't read is refused whole, with the
// line named, so that an import never applies part of a file.
#ifndef ZETSETTINGS_TOOLS_REGFILE_REGFILEREADER_H
#define ZETSETTINGS_TOOLS_REGFILE_REGFILEREADER_H

#include <string>

#include "RegFile.h"

namespace zetreg {

// Throws RegFileError.
RegFile readRegFile(const std::string& fileBytes);

}  // namespace zetreg

#endif
