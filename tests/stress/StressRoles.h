// The roles of the stress program: each test's driver, and the children it starts. Each test's
// file adds its roles by name at start-up; the first argument picks one, the rest are its options.
#ifndef ZETSETTINGS_TESTS_STRESS_STRESSROLES_H
#define ZETSETTINGS_TESTS_STRESS_STRESSROLES_H

#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

namespace zetstress {

// "--name value" pairs of a command line, with defaults.
class Options {
public:
    Options(int argc, char** argv, int first)
    {
        for (int i = first; i < argc; i += 2) {
            const std::string name = argv[i];
            if (name.compare(0, 2, "--") != 0 || i + 1 >= argc)
                throw std::invalid_argument("expected --name value, got '" + name + "'");
            m_values[name.substr(2)] = argv[i + 1];
        }
    }
    long number(const std::string& name, long fallback) const
    {
        return m_values.count(name) ? std::stol(m_values.at(name)) : fallback;
    }
    std::string text(const std::string& name, const std::string& fallback) const
    {
        return m_values.count(name) ? m_values.at(name) : fallback;
    }

private:
    std::map<std::string, std::string> m_values;
};

using Role = int (*)(const Options& options);

// Adds roles by name; true, so that a file adds its roles in a constant's initializer.
bool addRoles(std::initializer_list<std::pair<const char*, Role>> roles);

}  // namespace zetstress

#endif
