// What the .reg fuzz target does with one input, shared with the test that replays the kept
// inputs. Returns the empty string when every check held, or what went wrong.
//
// The input is a file's bytes. The reader may refuse it, with RegFileError only. A file that
// reads is written, and what is written must read back to the same keys and values, and
// write again to the same bytes: an export followed by an import changes nothing.
#ifndef ZETSETTINGS_TOOLS_REGFILE_FUZZ_REGFILEFUZZBODY_H
#define ZETSETTINGS_TOOLS_REGFILE_FUZZ_REGFILEFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "regfile/RegFileReader.h"
#include "regfile/RegFileWriter.h"

namespace zetfuzz {

inline bool sameValue(const zetreg::RegFileValue& a, const zetreg::RegFileValue& b)
{
    return a.name == b.name && a.isDefault == b.isDefault && a.remove == b.remove && a.type == b.type &&
           a.data == b.data;
}

inline std::string compareKeys(const zetreg::RegFile& first, const zetreg::RegFile& second)
{
    if (first.keys.size() != second.keys.size())
        return "the number of keys changed";
    for (std::size_t k = 0; k < first.keys.size(); ++k) {
        const zetreg::RegFileKey& a = first.keys[k];
        const zetreg::RegFileKey& b = second.keys[k];
        if (a.path != b.path || a.remove != b.remove)
            return "key " + std::to_string(k) + " changed its path or its removal";
        if (a.values.size() != b.values.size())
            return "key " + std::to_string(k) + " changed its number of values";
        for (std::size_t v = 0; v < a.values.size(); ++v)
            if (!sameValue(a.values[v], b.values[v]))
                return "value " + std::to_string(v) + " of key " + std::to_string(k) + " changed";
    }
    return std::string();
}

inline std::string runRegFile(const uint8_t* data, std::size_t size)
{
    zetreg::RegFile first;
    try {
        first = zetreg::readRegFile(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const zetreg::RegFileError&) {
        return std::string();
    }
    const std::string written = zetreg::writeRegFile(first.keys);
    zetreg::RegFile second;
    try {
        second = zetreg::readRegFile(written);
    } catch (const zetreg::RegFileError& e) {
        return std::string("a written file was refused: ") + e.what();
    }
    const std::string difference = compareKeys(first, second);
    if (!difference.empty())
        return "read back differently: " + difference;
    if (zetreg::writeRegFile(second.keys) != written)
        return "written differently the second time";
    return std::string();
}

}  // namespace zetfuzz

#endif
