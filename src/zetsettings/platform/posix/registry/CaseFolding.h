// How registry names compare: without regard to case, through Windows' fixed upcase table of
// the Basic Multilingual Plane, the same in every locale. Surrogates map to themselves, so a
// character beyond U+FFFF only ever equals itself.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CASEFOLDING_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CASEFOLDING_H

#include <cstddef>
#include <string>

namespace zet {
namespace portable {
namespace registry {

class CaseFolding {
public:
    // The upper-case form of one UTF-16 code unit.
    static char16_t upcase(char16_t unit)
    {
        if (unit < 0x80)
            return (unit >= u'a' && unit <= u'z') ? static_cast<char16_t>(unit - 0x20) : unit;
        return upcaseBeyondAscii(unit);
    }
    // The form in which two names are equal exactly when Windows calls them the same.
    static std::u16string fold(const std::u16string& name);
    static void foldInPlace(std::u16string& name);
    static void foldInPlace(char16_t* units, size_t count)
    {
        for (size_t i = 0; i < count; ++i)
            units[i] = upcase(units[i]);
    }

private:
    static char16_t upcaseBeyondAscii(char16_t unit);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
