// "--name value" pairs of a command line, with defaults.
#ifndef ZETSETTINGS_TESTS_STRESS_OPTIONS_H
#define ZETSETTINGS_TESTS_STRESS_OPTIONS_H

#include <map>
#include <string>
#include <vector>

namespace zetstress {

class Options {
public:
    Options(int argc, char** argv, int first);
    long number(const std::string& name, long fallback) const;
    std::string text(const std::string& name, const std::string& fallback) const;

private:
    std::map<std::string, std::string> m_values;
};

// The arguments that hand an option on to a child.
std::vector<std::string> pass(const std::string& name, const std::string& value);
std::vector<std::string> pass(const std::string& name, long value);

}  // namespace zetstress

#endif
