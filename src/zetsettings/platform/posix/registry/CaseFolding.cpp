#include "zetsettings/platform/posix/registry/CaseFolding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace zet {
namespace portable {
namespace registry {
namespace {

struct UpcaseRun {
    uint16_t first;
    uint16_t last;
    int32_t delta;
    uint16_t step;
};

const UpcaseRun kUpcaseRuns[] = {
#include "zetsettings/platform/posix/registry/UpcaseTable.inc"
};

}  // namespace

char16_t CaseFolding::upcaseBeyondAscii(char16_t unit)
{
    // The last run that starts at or before the unit is the only one that can hold it.
    const UpcaseRun* after = std::upper_bound(std::begin(kUpcaseRuns), std::end(kUpcaseRuns), unit,
                                              [](char16_t value, const UpcaseRun& run) { return value < run.first; });
    if (after == std::begin(kUpcaseRuns))
        return unit;
    const UpcaseRun& run = *(after - 1);
    if (unit > run.last || (unit - run.first) % run.step != 0)
        return unit;
    return static_cast<char16_t>(unit + run.delta);
}

std::u16string CaseFolding::fold(const std::u16string& name)
{
    std::u16string folded(name);
    foldInPlace(folded);
    return folded;
}

void CaseFolding::foldInPlace(std::u16string& name)
{
    foldInPlace(&name[0], name.size());
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
