// Child scenarios: code that a test runs in a real second process.
//
// A scenario is registered by name in the test program itself; the program started with
// --zet-child=NAME runs that scenario instead of the tests and exits with its result. The
// child works on the same test registry as the test that started it.
#ifndef ZETSETTINGS_TESTS_SUPPORT_CHILDSCENARIO_H
#define ZETSETTINGS_TESTS_SUPPORT_CHILDSCENARIO_H

#include <string>
#include <vector>

namespace zettest {

typedef int (*ChildScenarioFunction)(const std::vector<std::string>& args);

struct ChildScenarioRegistrar {
    ChildScenarioRegistrar(const char* name, ChildScenarioFunction function);
};

// Runs the scenario named by argv[1] (--zet-child=NAME) with the arguments behind it.
int runChildScenario(int argc, char** argv);
bool isChildInvocation(int argc, char** argv);

}  // namespace zettest

#define ZET_CHILD_SCENARIO(name)                                                                  \
    static int zetChildScenario_##name(const std::vector<std::string>& args);                    \
    static ::zettest::ChildScenarioRegistrar zetChildScenarioRegistrar_##name(#name,             \
                                                                              zetChildScenario_##name); \
    static int zetChildScenario_##name([[maybe_unused]] const std::vector<std::string>& args)

#endif
