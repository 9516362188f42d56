#include "zetsettings/platform/posix/registry/RegistryName.h"

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {

const size_t RegistryName::kMaxKeyNameUnits;
const size_t RegistryName::kMaxValueNameUnits;

RegistryName RegistryName::of(std::u16string original)
{
    RegistryName name;
    name.folded = CaseFolding::fold(original);
    name.original = std::move(original);
    return name;
}

RegistryName RegistryName::ofValue(const WCHAR* name)
{
    return of(WideText::toUtf16(name));
}

std::u16string RegistryName::foldedValue(const WCHAR* name)
{
    std::u16string folded = WideText::toUtf16(name);
    CaseFolding::foldInPlace(folded);
    return folded;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
