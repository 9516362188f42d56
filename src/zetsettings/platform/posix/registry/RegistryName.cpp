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

FoldedValueName::FoldedValueName(const WCHAR* name)
{
    const size_t characters = WideText::lengthOf(name);
    // A character takes at most two units.
    char16_t* units = m_inline;
    if (2 * characters > kInlineUnits) {
        m_spilled.reset(new char16_t[2 * characters]);
        units = m_spilled.get();
    }
    const size_t count = WideText::writeUtf16(name, characters, units);
    CaseFolding::foldInPlace(units, count);
    m_folded = std::u16string_view(units, count);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
