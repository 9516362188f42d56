// Reads .reg files: "Windows Registry Editor Version 5.00" (UTF-16 little-endian with a byte
// order mark as Windows writes it, or UTF-8) and REGEDIT4 (8-bit text: UTF-8 where it is valid
// UTF-8, else Windows-1252, the code page Windows writes them in). A key name with a line break
// may stand quoted, as the writer gives it: ["HKEY_LOCAL_MACHINE\\a\nb"].
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
