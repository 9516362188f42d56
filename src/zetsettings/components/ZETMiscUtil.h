// Small string tools.
//
// split and join take the delimiter as a whole string, whose length counts (not a
// terminator), so a delimiter of one NUL character works like any other. split of the empty
// text gives no pieces; otherwise n delimiters give n + 1 pieces, empty ones included.
#ifndef ZETSETTINGS_COMPONENTS_ZETMISCUTIL_H
#define ZETSETTINGS_COMPONENTS_ZETMISCUTIL_H

#include <string>
#include <vector>

class ZETMiscUtil {
public:
    // Lower-cases in place: ASCII letters and the letters that have a simple lower-case form
    // in the Basic Multilingual Plane, the same on every platform whatever the locale.
    static void toLower(std::wstring& text);

    // The text without any run of the character at either end.
    static std::wstring trim(const std::wstring& text, wchar_t character);
    // The same on each element, in place.
    static void trim(std::vector<std::wstring>& texts, wchar_t character);
    // Removes at most one occurrence of the character at each end of each element, in place.
    // A lone occurrence is removed whole, leaving the empty text.
    static void trimone(std::vector<std::wstring>& texts, wchar_t character);

    static std::vector<std::wstring> split(const std::wstring& text, const std::wstring& delimiter);
    static std::wstring join(const std::vector<std::wstring>& pieces, const std::wstring& delimiter);
};

#endif
