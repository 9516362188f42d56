#include "Options.h"

#include <stdexcept>

namespace zetstress {

Options::Options(int argc, char** argv, int first)
{
    for (int i = first; i < argc; i += 2) {
        const std::string name = argv[i];
        if (name.compare(0, 2, "--") != 0 || i + 1 >= argc)
            throw std::invalid_argument("expected --name value, got '" + name + "'");
        m_values[name.substr(2)] = argv[i + 1];
    }
}

long Options::number(const std::string& name, long fallback) const
{
    const auto found = m_values.find(name);
    return found == m_values.end() ? fallback : std::stol(found->second);
}

std::string Options::text(const std::string& name, const std::string& fallback) const
{
    const auto found = m_values.find(name);
    return found == m_values.end() ? fallback : found->second;
}

std::vector<std::string> pass(const std::string& name, const std::string& value)
{
    return {"--" + name, value};
}

std::vector<std::string> pass(const std::string& name, long value)
{
    return pass(name, std::to_string(value));
}

}  // namespace zetstress
