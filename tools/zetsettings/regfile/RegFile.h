// The content of a .reg file, as the registry editor of Windows writes and reads it.
//
// Value data is held in the form the registry of Windows holds it: text types (REG_SZ,
// REG_EXPAND_SZ, REG_MULTI_SZ) as UTF-16 little-endian bytes with their terminators, numbers
// little-endian, everything else as given. The tool converts to and from the Win32 interface of
// the platform; this library knows nothing of the registry itself.
#ifndef ZETSETTINGS_TOOLS_REGFILE_REGFILE_H
#define ZETSETTINGS_TOOLS_REGFILE_REGFILE_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace zetreg {

enum RegType : uint32_t {
    kRegNone = 0,
    kRegSz = 1,
    kRegExpandSz = 2,
    kRegBinary = 3,
    kRegDword = 4,
    kRegDwordBigEndian = 5,
    kRegLink = 6,
    kRegMultiSz = 7,
    kRegQword = 11,
};

bool isTextType(uint32_t type);

struct RegFileValue {
    std::wstring name;   // empty with isDefault for the key's default value ("@")
    bool isDefault = false;
    bool remove = false; // "name"=-
    uint32_t type = kRegNone;
    std::string data;
};

struct RegFileKey {
    std::wstring path;   // as written, root first: HKEY_LOCAL_MACHINE\Software\...
    bool remove = false; // [-path]: the key and everything below it
    std::vector<RegFileValue> values;
    int line = 0;        // where the key began in the file it was read from
};

struct RegFile {
    int version = 5;     // 5 for "Windows Registry Editor Version 5.00", 4 for REGEDIT4
    std::vector<RegFileKey> keys;
};

// A file that can't be read; line is 0 when the fault is not on one line (encoding, header).
class RegFileError : public std::runtime_error {
public:
    RegFileError(int line, const std::string& message);
    int line() const { return m_line; }

private:
    int m_line;
};

// The registry's roots that a path may start with, by long and short name.
struct RegRoot {
    const wchar_t* longName;
    const wchar_t* shortName;
};
const std::vector<RegRoot>& knownRoots();
// "HKLM\a\b" or "HKEY_LOCAL_MACHINE\a\b" (any case) into the root's index and "a\b". False when
// the path does not begin with a known root.
bool splitRootPath(const std::wstring& path, std::size_t& rootIndex, std::wstring& rest);
// The names of the roots for a message: "HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, ...".
std::string rootNamesForMessage();

}  // namespace zetreg

#endif
