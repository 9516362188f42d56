#include "zetsettings/platform/posix/registry/KeyPath.h"

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const char16_t kSeparator = u'\\';

}  // namespace

const size_t KeyPath::kInlineBytes;

KeyPath::KeyPath() : m_memory(m_inline, sizeof(m_inline)), m_components(&m_memory)
{
}

NameView KeyPath::component(size_t index) const
{
    const Span& span = m_components[index];
    return NameView{m_original.substr(span.start, span.units), m_folded.substr(span.start, span.units)};
}

char16_t* KeyPath::allocateUnits(size_t units)
{
    return static_cast<char16_t*>(m_memory.allocate(units * sizeof(char16_t), alignof(char16_t)));
}

LONG KeyPath::parse(const WCHAR* text, bool allowLeadingSeparator, KeyPath& path)
{
    path.m_components.clear();
    path.m_components.reserve(kUsualDepth);
    const size_t characters = WideText::lengthOf(text);
    // A character takes at most two units.
    char16_t* const original = path.allocateUnits(2 * characters);
    const size_t units = WideText::writeUtf16(text, characters, original);
    char16_t* const folded = path.allocateUnits(units);
    path.m_original = std::u16string_view(original, units);
    path.m_folded = std::u16string_view(folded, units);
    size_t start = 0;
    if (units > 0 && original[0] == kSeparator) {
        if (!allowLeadingSeparator)
            return ERROR_BAD_PATHNAME;
        folded[0] = kSeparator;
        start = 1;
    }
    // One pass splits and folds; separators fold to themselves.
    size_t nameStart = start;
    for (size_t i = start; i <= units; ++i) {
        if (i < units && original[i] != kSeparator) {
            folded[i] = CaseFolding::upcase(original[i]);
            continue;
        }
        if (i - nameStart > RegistryName::kMaxKeyNameUnits)
            return ERROR_INVALID_PARAMETER;
        if (i > nameStart)
            path.m_components.push_back(Span{nameStart, i - nameStart});
        if (i < units)
            folded[i] = kSeparator;
        nameStart = i + 1;
    }
    return ERROR_SUCCESS;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
