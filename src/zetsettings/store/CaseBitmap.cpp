// Network names to registry value names and back. Registry value names ignore case and
// network names don't, so each value name carries, behind its last "_", one hex digit per four
// UTF-16 code units of the name, a set bit marking an ASCII capital. Code units, not wchar_t:
// the same name gets the same value name whatever the width of wchar_t.
#include "zetsettings/ZETSettings.h"

#include <cstddef>
#include <vector>

#include "zetsettings/serial/ZETUtf16.h"

namespace {

const wchar_t kSeparator = L'_';
const std::size_t kUnitsPerDigit = 4;

bool isAsciiCapital(wchar_t character)
{
    return character >= L'A' && character <= L'Z';
}

bool isAsciiSmall(wchar_t character)
{
    return character >= L'a' && character <= L'z';
}

// Two where wchar_t holds a character beyond U+FFFF whole, else one.
std::size_t unitsOf(wchar_t character)
{
    return ZETUtf16::unitCount(&character, 1);
}

wchar_t hexDigit(unsigned value)
{
    return L"0123456789ABCDEF"[value & 0xF];
}

// Anything that is not a hex digit counts as 0.
unsigned digitValue(wchar_t digit)
{
    if (digit >= L'0' && digit <= L'9')
        return static_cast<unsigned>(digit - L'0');
    if (digit >= L'a' && digit <= L'f')
        return static_cast<unsigned>(digit - L'a' + 10);
    if (digit >= L'A' && digit <= L'F')
        return static_cast<unsigned>(digit - L'A' + 10);
    return 0;
}

// The value of each UTF-16 code unit of the digits. A character beyond U+FFFF is two units,
// neither of them a digit, so a foreign name has the same number of digits on every platform.
std::vector<unsigned> digitUnits(const std::wstring& digits)
{
    std::vector<unsigned> values;
    values.reserve(digits.size());
    for (wchar_t digit : digits)
        values.insert(values.end(), unitsOf(digit), digitValue(digit));
    return values;
}

// The bit of one code unit; at() throws std::out_of_range where the digits run out.
bool isCapitalUnit(const std::vector<unsigned>& digits, std::size_t unit)
{
    const unsigned value = digits.at(unit / kUnitsPerDigit);
    return (value >> (kUnitsPerDigit - 1 - unit % kUnitsPerDigit)) & 1u;
}

wchar_t withAsciiCase(wchar_t character, bool capital)
{
    if (capital && isAsciiSmall(character))
        return static_cast<wchar_t>(character - L'a' + L'A');
    if (!capital && isAsciiCapital(character))
        return static_cast<wchar_t>(character - L'A' + L'a');
    return character;
}

}  // namespace

std::wstring ZETSettings::createCaseBitmap(const std::wstring& networkName)
{
    std::wstring valueName;
    valueName.reserve(networkName.size() + 1 + (2 * networkName.size() + kUnitsPerDigit - 1) / kUnitsPerDigit);
    valueName = networkName;
    valueName += kSeparator;

    unsigned accumulator = 0;
    std::size_t unit = 0;
    const auto shiftIn = [&](bool bit) {
        accumulator = (accumulator << 1) | (bit ? 1u : 0u);
        if (unit % kUnitsPerDigit == kUnitsPerDigit - 1) {
            valueName += hexDigit(accumulator);
            accumulator = 0;
        }
        ++unit;
    };
    for (wchar_t character : networkName) {
        // A character of two code units is never an ASCII capital: two 0 bits.
        for (std::size_t k = unitsOf(character); k > 1; --k)
            shiftIn(false);
        shiftIn(isAsciiCapital(character));
    }
    // A last group shorter than four is filled with 0 bits on its low side.
    while (unit % kUnitsPerDigit != 0)
        shiftIn(false);
    return valueName;
}

std::wstring ZETSettings::removeCaseBitmap(const std::wstring& valueName)
{
    const std::size_t separator = valueName.rfind(kSeparator);
    if (separator == std::wstring::npos)
        return std::wstring();
    // The digits never hold a "_": underscores of the name itself stand before the last one.
    std::wstring networkName = valueName.substr(0, separator);
    const std::vector<unsigned> digits = digitUnits(valueName.substr(separator + 1));

    std::size_t unit = 0;
    for (wchar_t& character : networkName) {
        // The bitmap decides, not the letters: the name's own case is thrown away.
        bool capital = false;
        for (std::size_t k = unitsOf(character); k > 0; --k)
            capital = isCapitalUnit(digits, unit++);
        character = withAsciiCase(character, capital);
    }
    return networkName;
}
