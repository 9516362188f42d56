#include "Cli.h"

#include <cerrno>
#include <cctype>
#include <cstdlib>

namespace zettool {

bool Args::flag(const std::string& name)
{
    for (auto it = m_words.begin(); it != m_words.end(); ++it) {
        if (*it == name) {
            m_words.erase(it);
            return true;
        }
    }
    return false;
}

std::optional<std::string> Args::option(const std::string& name)
{
    for (auto it = m_words.begin(); it != m_words.end(); ++it) {
        if (it->compare(0, name.size() + 1, name + "=") == 0) {
            std::string value = it->substr(name.size() + 1);
            m_words.erase(it);
            return value;
        }
        if (*it == name) {
            if (it + 1 == m_words.end())
                throw UsageError(name + " needs a value");
            std::string value = *(it + 1);
            m_words.erase(it, it + 2);
            return value;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Args::nextIfAny()
{
    if (m_words.empty())
        return std::nullopt;
    if (m_words.front().size() > 2 && m_words.front().compare(0, 2, "--") == 0)
        throw UsageError("unknown option " + m_words.front());
    std::string word = m_words.front();
    m_words.erase(m_words.begin());
    return word;
}

std::string Args::next(const std::string& what)
{
    std::optional<std::string> word = nextIfAny();
    if (!word)
        throw UsageError("missing " + what);
    return *word;
}

void Args::finish() const
{
    if (m_words.empty())
        return;
    const std::string& word = m_words.front();
    if (word.size() > 2 && word.compare(0, 2, "--") == 0)
        throw UsageError("unknown option " + word);
    throw UsageError("unexpected argument " + word);
}

long long parseInteger(const std::string& text, long long low, long long high, const std::string& what)
{
    errno = 0;
    char* end = nullptr;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const long long value = std::strtoll(text.c_str(), &end, hex ? 16 : 10);
    if (text.empty() || *end != '\0' || (hex && text.size() == 2))
        throw UsageError(what + " must be a number, not \"" + text + "\"");
    if (errno == ERANGE || value < low || value > high)
        throw UsageError(what + " is out of range: " + text + " (allowed " + std::to_string(low) + " to " +
                         std::to_string(high) + ")");
    return value;
}

unsigned char parseByte(const std::string& text, const std::string& what)
{
    return static_cast<unsigned char>(parseInteger(text, 0, 255, what));
}

bool parseSwitch(const std::string& given, const std::string& what)
{
    std::string text = given;
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (text == "on" || text == "true" || text == "yes" || text == "1")
        return true;
    if (text == "off" || text == "false" || text == "no" || text == "0")
        return false;
    throw UsageError(what + " must be on or off, not \"" + given + "\"");
}

std::string parseHexBytes(const std::string& text, const std::string& what)
{
    std::string digits;
    for (char c : text) {
        if (c == ' ' || c == ':' || c == ',' || c == '-')
            continue;
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            throw UsageError(what + " must be hex digits, not \"" + text + "\"");
        digits += c;
    }
    if (digits.size() % 2 != 0)
        throw UsageError(what + " needs an even number of hex digits: \"" + text + "\"");
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::strtol(digits.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

std::optional<std::string> bytesOption(Args& args, const std::string& name)
{
    const std::optional<std::string> hex = args.option("--" + name + "-hex");
    const std::optional<std::string> text = args.option("--" + name + "-text");
    if (hex && text)
        throw UsageError("give --" + name + "-hex or --" + name + "-text, not both");
    if (hex)
        return parseHexBytes(*hex, "--" + name + "-hex");
    return text;
}

// An error names what it was given; a name of thousands of characters is cut in its middle.
std::string clipped(const std::string& message)
{
    const std::size_t kHead = 160, kTail = 80;
    if (message.size() <= kHead + kTail + 40)
        return message;
    std::size_t head = kHead, tail = message.size() - kTail;
    // Cut between characters, never inside one of UTF-8's sequences.
    while (head > 0 && (static_cast<unsigned char>(message[head]) & 0xC0) == 0x80)
        --head;
    while (tail < message.size() && (static_cast<unsigned char>(message[tail]) & 0xC0) == 0x80)
        ++tail;
    return message.substr(0, head) + "[... " + std::to_string(tail - head) + " bytes left out ...]" +
           message.substr(tail);
}

}  // namespace zettool
