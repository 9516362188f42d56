// A real second process running a child scenario of this test program (see ChildScenario.h).
// Not copyable, as its Impl pointer isn't.
#ifndef ZETSETTINGS_TESTS_SUPPORT_CHILDPROCESS_H
#define ZETSETTINGS_TESTS_SUPPORT_CHILDPROCESS_H

#include <memory>
#include <string>
#include <vector>

namespace zettest {

class ChildProcess {
public:
    // Starts the scenario at once.
    explicit ChildProcess(const std::string& scenario, const std::vector<std::string>& args = {});
    // Kills the child if it still runs, and reaps it.
    ~ChildProcess();

    // Waits for the end; the scenario's exit code, or -1 if it was killed.
    int wait();
    // Ends the child at once, as SIGKILL does: no handler, no clean-up of its own.
    void killHard();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// Starts the scenario and waits for its exit code.
int runChild(const std::string& scenario, const std::vector<std::string>& args = {});

}  // namespace zettest

#endif
