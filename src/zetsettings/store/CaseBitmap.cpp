// Network names to registry value names and back. Registry value names ignore case and
// network names don't, so each value name carries, behind its last "_", one hex digit per four
// UTF-16 code units of the name, a set bit marking an ASCII capital. Code units, not wchar_t:
// the same name gets the same value name whatever the width of wchar_t.
#include "zetsettings/ZETSettings.h"

#include <cstddef>
#include <stdexcept>

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

std::size_t unitsOf(wchar_t character)
{
    return ZETUtf16::unitsOfCharacter(character);
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

// The digits behind the last "_", read in step with the name's code units. Each digit counts
// as many code units as it has itself: a character beyond U+FFFF is two units, neither of them
// a digit, so a foreign name has the same number of digits on every platform. Units are asked
// for in ascending order, so the digits are walked once and nothing is copied.
class CaseDigits {
public:
    CaseDigits(const wchar_t* begin, const wchar_t* end) : m_next(begin), m_end(end) {}

    // The bit of the name's code unit number `unit`; throws std::out_of_range where the
    // digits run out, before any name is handed back.
    bool isCapital(std::size_t unit)
    {
        const std::size_t digit = unit / kUnitsPerDigit;
        while (m_unitsRead <= digit) {
            if (m_next == m_end)
                throw std::out_of_range("removeCaseBitmap: too few case digits");
            m_value = digitValue(*m_next);
            m_unitsRead += unitsOf(*m_next);
            ++m_next;
        }
        return (m_value >> (kUnitsPerDigit - 1 - unit % kUnitsPerDigit)) & 1u;
    }

private:
    const wchar_t* m_next;
    const wchar_t* m_end;
    std::size_t m_unitsRead = 0;
    unsigned m_value = 0;
};

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
    std::wstring networkName(valueName, 0, separator);
    CaseDigits digits(valueName.data() + separator + 1, valueName.data() + valueName.size());

    std::size_t unit = 0;
    for (wchar_t& character : networkName) {
        // The bitmap decides, not the letters: the name's own case is thrown away.
        bool capital = false;
        for (std::size_t k = unitsOf(character); k > 0; --k)
            capital = digits.isCapital(unit++);
        character = withAsciiCase(character, capital);
    }
    return networkName;
}
