// The words of a command line, taken by the command that understands them: options by name
// wherever they stand, then the positional words in order. Whatever no command took is an error.
#ifndef ZETSETTINGS_TOOLS_CLI_H
#define ZETSETTINGS_TOOLS_CLI_H

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zettool {

// Bad arguments: the message names the problem; the tool exits with kExitUsage.
class UsageError : public std::runtime_error {
public:
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

// A failure of the operation itself; the tool exits with kExitFailure.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& message) : std::runtime_error(message) {}
};

const int kExitSuccess = 0;
const int kExitFailure = 1;
const int kExitUsage = 2;

class Args {
public:
    explicit Args(std::vector<std::string> words) : m_words(std::move(words)) {}

    bool empty() const { return m_words.empty(); }
    // Removes and reports a bare option such as --secret.
    bool flag(const std::string& name);
    // Removes "--name VALUE" (or "--name=VALUE") and gives VALUE.
    std::optional<std::string> option(const std::string& name);
    // The next positional word; a missing one is a UsageError naming `what`.
    std::string next(const std::string& what);
    std::optional<std::string> nextIfAny();
    // Every word must have been taken.
    void finish() const;

private:
    std::vector<std::string> m_words;
};

// Checked conversions; each error message names the argument.
long long parseInteger(const std::string& text, long long low, long long high, const std::string& what);
unsigned char parseByte(const std::string& text, const std::string& what);
// "on"/"off", "true"/"false", "yes"/"no", "1"/"0".
bool parseSwitch(const std::string& text, const std::string& what);
// Hex digits, optionally separated by blanks, colons, commas or dashes; an even count of digits.
std::string parseHexBytes(const std::string& text, const std::string& what);

// An error names what it was given; a name of thousands of characters is cut in its middle.
std::string clipped(const std::string& message);

// Bytes from exactly one of --NAME-hex and --NAME-text (UTF-8), if either was given.
std::optional<std::string> bytesOption(Args& args, const std::string& name);

}  // namespace zettool

#endif
