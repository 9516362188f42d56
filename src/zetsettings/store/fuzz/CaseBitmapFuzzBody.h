// What the case bitmap fuzz target does with one input, shared with the test that replays the
// kept inputs. Returns the empty string when every check held, or what went wrong.
//
// The input is a wide name as the platform holds it (wchar_t units, any value). It goes
// through createCaseBitmap and back, which must give it unchanged, and it is read itself as a
// value name: removeCaseBitmap may refuse it with std::out_of_range exactly when its digits
// are too few for the name before its last "_", and otherwise may change only the case of
// ASCII letters of that name.
#ifndef ZETSETTINGS_STORE_FUZZ_CASEBITMAPFUZZBODY_H
#define ZETSETTINGS_STORE_FUZZ_CASEBITMAPFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/serial/ZETUtf16.h"

namespace zetfuzz {

inline std::wstring wideOf(const uint8_t* data, std::size_t size)
{
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (!text.empty())
        std::memcpy(&text[0], data, text.size() * sizeof(wchar_t));
    return text;
}

inline wchar_t asciiLower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

inline bool equalIgnoringAsciiCase(const std::wstring& a, const std::wstring& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (asciiLower(a[i]) != asciiLower(b[i]))
            return false;
    return true;
}

// One digit covers four UTF-16 code units of the name: fewer digits than that can't be read.
inline bool tooFewDigits(const std::wstring& valueName, std::size_t separator)
{
    if (separator == std::wstring::npos)
        return false;
    const std::size_t nameUnits = ZETUtf16::unitCount(valueName.data(), separator);
    const std::size_t digitUnits = ZETUtf16::unitCount(valueName.data() + separator + 1,
                                                       valueName.size() - separator - 1);
    return nameUnits > 4 * digitUnits;
}

inline std::string checkRoundTrip(const std::wstring& name)
{
    try {
        if (ZETSettingsTestAccess::removeCaseBitmap(ZETSettingsTestAccess::createCaseBitmap(name)) != name)
            return "a name did not come back from its own value name";
    } catch (const std::exception& e) {
        return std::string("a name's own value name could not be read: ") + e.what();
    }
    return std::string();
}

inline std::string checkValueName(const std::wstring& valueName)
{
    const std::size_t separator = valueName.rfind(L'_');
    const bool refusable = tooFewDigits(valueName, separator);
    std::wstring name;
    try {
        name = ZETSettingsTestAccess::removeCaseBitmap(valueName);
    } catch (const std::out_of_range&) {
        return refusable ? std::string() : "std::out_of_range with digits enough";
    }
    if (refusable)
        return "too few digits, yet a name came back";
    const std::wstring before = separator == std::wstring::npos ? std::wstring() : valueName.substr(0, separator);
    if (!equalIgnoringAsciiCase(name, before))
        return "more changed than the case of ASCII letters";
    return std::string();
}

inline std::string runCaseBitmap(const uint8_t* data, std::size_t size)
{
    const std::wstring text = wideOf(data, size);
    const std::string failure = checkRoundTrip(text);
    return failure.empty() ? checkValueName(text) : failure;
}

}  // namespace zetfuzz

#endif
