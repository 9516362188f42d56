// Writes .reg files in the form that Windows' own "reg export" gives: UTF-16 little-endian
// with a byte order mark, the "Windows Registry Editor Version 5.00" header, CR LF line ends,
// one block per key, and long hex data continued over lines of at most 80 characters.
#ifndef ZETSETTINGS_TOOLS_REGFILE_REGFILEWRITER_H
#define ZETSETTINGS_TOOLS_REGFILE_REGFILEWRITER_H

#include <string>
#include <vector>

#include "RegFile.h"

namespace zetreg {

// The file's bytes, for keys in the order given (an export lists each key before its subkeys).
std::string writeRegFile(const std::vector<RegFileKey>& keys);

// The text of one value line, without its line end: "name"=data. Exposed for tests.
std::u16string formatValueLine(const RegFileValue& value);

}  // namespace zetreg

#endif
