#include "support/ChildScenario.h"

#include <cstdio>
#include <cstring>
#include <map>

#include "support/ChildProcess.h"
#include "support/TestRegistry.h"

namespace zettest {
namespace {

const char kPrefix[] = "--zet-child=";

std::map<std::string, ChildScenarioFunction>& scenarios()
{
    static std::map<std::string, ChildScenarioFunction> registered;
    return registered;
}

}  // namespace

ChildScenarioRegistrar::ChildScenarioRegistrar(const char* name, ChildScenarioFunction function)
{
    scenarios()[name] = function;
}

bool isChildInvocation(int argc, char** argv)
{
    return argc >= 2 && std::strncmp(argv[1], kPrefix, sizeof(kPrefix) - 1) == 0;
}

int runChildScenario(int argc, char** argv)
{
    const std::string name = argv[1] + sizeof(kPrefix) - 1;
    auto found = scenarios().find(name);
    if (found == scenarios().end()) {
        std::fprintf(stderr, "no child scenario named %s\n", name.c_str());
        return 125;
    }
    TestRegistry::adoptInChild();
    return found->second(std::vector<std::string>(argv + 2, argv + argc));
}

int runChild(const std::string& scenario, const std::vector<std::string>& args)
{
    return ChildProcess(scenario, args).wait();
}

}  // namespace zettest
