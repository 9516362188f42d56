#include "zetsettings/platform/posix/registry/KeyPath.h"

#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const char16_t kSeparator = u'\\';

}  // namespace

LONG KeyPath::parse(const WCHAR* text, bool allowLeadingSeparator, KeyPath& path)
{
    path.m_components.clear();
    std::u16string whole = WideText::toUtf16(text);
    size_t start = 0;
    if (!whole.empty() && whole[0] == kSeparator) {
        if (!allowLeadingSeparator)
            return ERROR_BAD_PATHNAME;
        start = 1;
    }
    while (start < whole.size()) {
        size_t end = whole.find(kSeparator, start);
        if (end == std::u16string::npos)
            end = whole.size();
        if (end - start > RegistryName::kMaxKeyNameUnits)
            return ERROR_INVALID_PARAMETER;
        if (end > start)
            path.m_components.push_back(RegistryName::of(whole.substr(start, end - start)));
        start = end + 1;
    }
    return ERROR_SUCCESS;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
