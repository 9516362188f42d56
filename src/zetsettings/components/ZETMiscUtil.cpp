#include "zetsettings/components/ZETMiscUtil.h"

#include <algorithm>
#include <iterator>

namespace {

struct LowerCaseRun {
    unsigned first;
    unsigned last;
    int delta;
    unsigned step;
};

const LowerCaseRun kLowerCaseRuns[] = {
#include "zetsettings/components/LowerCaseTable.inc"
};

wchar_t lowerCaseOf(wchar_t character)
{
    const unsigned code = static_cast<unsigned>(character);
    if (code < 0x80)
        return (code >= 'A' && code <= 'Z') ? static_cast<wchar_t>(code + 32) : character;
    // The runs are sorted by their first code unit: find the last run that starts at or before.
    const LowerCaseRun* end = std::end(kLowerCaseRuns);
    const LowerCaseRun* run = std::upper_bound(std::begin(kLowerCaseRuns), end, code,
                                               [](unsigned value, const LowerCaseRun& r) { return value < r.first; });
    if (run == std::begin(kLowerCaseRuns))
        return character;
    --run;
    if (code > run->last || (code - run->first) % run->step != 0)
        return character;
    return static_cast<wchar_t>(static_cast<int>(code) + run->delta);
}

}  // namespace

void ZETMiscUtil::toLower(std::wstring& text)
{
    for (wchar_t& character : text)
        character = lowerCaseOf(character);
}

std::wstring ZETMiscUtil::trim(const std::wstring& text, wchar_t character)
{
    const std::wstring::size_type first = text.find_first_not_of(character);
    if (first == std::wstring::npos)
        return std::wstring();
    const std::wstring::size_type last = text.find_last_not_of(character);
    return text.substr(first, last - first + 1);
}

void ZETMiscUtil::trim(std::vector<std::wstring>& texts, wchar_t character)
{
    for (std::wstring& text : texts)
        text = trim(text, character);
}

void ZETMiscUtil::trimone(std::vector<std::wstring>& texts, wchar_t character)
{
    for (std::wstring& text : texts) {
        if (!text.empty() && text.front() == character)
            text.erase(0, 1);
        if (!text.empty() && text.back() == character)
            text.pop_back();
    }
}

std::vector<std::wstring> ZETMiscUtil::split(const std::wstring& text, const std::wstring& delimiter)
{
    std::vector<std::wstring> pieces;
    if (text.empty())
        return pieces;
    if (delimiter.empty()) {
        pieces.push_back(text);
        return pieces;
    }
    std::wstring::size_type start = 0;
    for (;;) {
        const std::wstring::size_type found = text.find(delimiter, start);
        if (found == std::wstring::npos)
            break;
        pieces.push_back(text.substr(start, found - start));
        start = found + delimiter.size();
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::wstring ZETMiscUtil::join(const std::vector<std::wstring>& pieces, const std::wstring& delimiter)
{
    std::wstring joined;
    for (std::vector<std::wstring>::size_type i = 0; i < pieces.size(); ++i) {
        if (i != 0)
            joined += delimiter;
        joined += pieces[i];
    }
    return joined;
}
